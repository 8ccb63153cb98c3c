#pragma once

#include <QLineEdit>
#include <string>

namespace corvalog {

// A text box that lets through only what the numeric key filter allows. Typing is filtered
// key by key; whatever arrives in one piece (paste, middle click, input method) keeps only the
// characters the filter would have let be typed. Drops are refused: they would bypass both.
// `extra`: characters let through besides digits, the decimal separator and a leading minus.
class NumericLineEdit : public QLineEdit
{
public:
    NumericLineEdit(bool commaDecimal, std::string extra, QWidget *parent = nullptr);

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void inputMethodEvent(QInputMethodEvent *event) override;

private:
    void replacedRange(int &start, int &length) const;
    QString filtered(const QString &pasted) const;
    void insertFiltered(const QString &pasted);

    bool m_commaDecimal;
    std::string m_extra;
};

// Shows whether a number box holds a number: its text turns red and its tooltip says that the
// setting keeps its value, until the box reads as a number again.
void showNumberState(QLineEdit &box, bool isNumber);

} // namespace corvalog
