#pragma once

#include <QDialog>
#include <string>

class QCheckBox;
class QComboBox;
class QLineEdit;
class QPlainTextEdit;
class QShowEvent;
class QTreeWidget;
class QTreeWidgetItem;

namespace corvalog {

struct ItemClass;
struct WorkspaceClass;
class ExpressionBox;
class PortComboBox;
class ScriptEngine;
class UserPrompts;

// The "Configure Workspace" dialog: the general settings of the workspace, a list of its
// channels and the boxes of the channel chosen in the list. Channel edits go into the
// workspace as they are typed; the general settings go back when the dialog closes, however it
// is closed. Saving and activating the result is the caller's business.
class WorkSpaceFrm : public QDialog
{
    Q_OBJECT

public:
    // Builds the dialog over `workspace` and fills it. `engine` checks expressions as they are
    // typed, and its tables tell which modules have been heard; `prompts` asks before channels
    // are dropped; `commaDecimal` says whether numbers are written and read with a decimal
    // comma. `settingsFile` holds the program's driver settings: which device each COM port
    // opens ("" offers the devices present and keeps no choice of device).
    WorkSpaceFrm(WorkspaceClass &workspace, ScriptEngine &engine, UserPrompts &prompts,
        bool commaDecimal, std::string settingsFile = {}, QWidget *parent = nullptr);

    // The list row of a channel (1-based number), or -1 when it has none.
    int FindItem(int channel) const;

    // Every way of closing ends here: the general controls go back to the workspace first.
    void done(int result) override;

protected:
    void showEvent(QShowEvent *event) override;

private:
    // Fills the general controls from the workspace.
    void WorkspaceToForm();
    // Refills the channel list, one row per channel, keeping the current channel where it
    // still exists (else the first).
    void WorkSpaceToList();
    // Copies the general controls back into the workspace.
    void FormToWorkspace();
    void buildControls();
    void fillLists();
    // Lets the user pick a module heard since start-up and inserts it at the cursor.
    void insertHeardModule();
    void connectControls();

    void channelsChosen(int index);
    void selectChannel(int channel);
    void itemToBoxes();
    void refreshRow(int channel);
    void fillRow(QTreeWidgetItem &row, int channel, const ItemClass &item) const;
    void showInterfaceChoice(int index);

    ItemClass *currentItem();
    QString numberText(float value) const;

    WorkspaceClass &m_workspace;
    ScriptEngine &m_engine;
    UserPrompts &m_prompts;
    bool m_commaDecimal = false;
    std::string m_settingsFile;

    int m_current = 0;
    bool m_loading = false; // the program, not the user, is writing into the controls
    bool m_returned = false; // FormToWorkspace already ran for this showing

    QLineEdit *m_tbTitle = nullptr;
    QPlainTextEdit *m_tbNotes = nullptr;
    QComboBox *m_cbInterface = nullptr;
    PortComboBox *m_cbPort = nullptr;
    QComboBox *m_cbBaudrate = nullptr;
    QComboBox *m_cbChannels = nullptr;
    QLineEdit *m_tbLogInterval = nullptr;
    QComboBox *m_cbRFChannel = nullptr;
    QComboBox *m_cbAddress = nullptr;
    QCheckBox *m_cbKeepAwake = nullptr;
    QTreeWidget *m_lv = nullptr;
    QLineEdit *m_tbCaption = nullptr;
    QLineEdit *m_tbTag = nullptr;
    ExpressionBox *m_expression = nullptr;
    QLineEdit *m_tbFormat = nullptr;
    QLineEdit *m_tbTareValue = nullptr;
    QLineEdit *m_tbTimeout = nullptr;
    QLineEdit *m_tbDefault = nullptr;
    QLineEdit *m_tbUnderload = nullptr;
    QLineEdit *m_tbOverload = nullptr;
    QComboBox *m_ddFunction = nullptr;
    QWidget *m_channelBoxes = nullptr;
};

} // namespace corvalog
