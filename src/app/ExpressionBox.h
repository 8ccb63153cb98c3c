#pragma once

#include <QPalette>
#include <QWidget>

class QLabel;
class QLineEdit;

namespace corvalog {

class ScriptEngine;

// A channel's expression box with its mark: a green tick while the text compiles, a red cross
// (its tooltip says what is wrong) and red text while it does not.
class ExpressionBox : public QWidget
{
public:
    ExpressionBox(ScriptEngine &engine, QWidget *parent = nullptr);

    QLineEdit &edit() { return *m_edit; }

    // Checks the text and shows the outcome; with no channel to check, shows no mark.
    void check(bool haveChannel);

private:
    ScriptEngine &m_engine;
    QLineEdit *m_edit;
    QLabel *m_tick;
    QLabel *m_cross;
    QPalette m_normal;
};

} // namespace corvalog
