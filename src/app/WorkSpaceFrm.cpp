#include "WorkSpaceFrm.h"

#include "ExpressionBox.h"
#include "HeardModulesDialog.h"
#include "HelpTopics.h"
#include "LabelledGrid.h"
#include "NumericLineEdit.h"
#include "PortComboBox.h"
#include "runtime/Convert.h"
#include "runtime/NumberText.h"
#include "runtime/UserPrompts.h"
#include "runtime/VbError.h"
#include "values/HeardTags.h"
#include "values/ScriptEngine.h"
#include "values/ValidateModule.h"
#include "workspace/INIFileModule.h"
#include "workspace/WorkspaceClass.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QSignalBlocker>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <array>
#include <optional>
#include <string>

namespace corvalog {

namespace {

constexpr std::array<const char *, 6> kFunctionNames
    = { "None", "Peak Capture", "Trough Capture", "Filter Light", "Filter Medium", "Filter Heavy" };

constexpr std::array<int, 8> kBaudrates
    = { 9600, 19200, 38400, 57600, 115200, 230400, 460800, 921600 };

// The ports offered when no serial device is present or mapped, so a number can be chosen.
// The role of a port entry's device, beside the port number as its data.
// The driver takes the radio channel and the base-station address as bytes.
constexpr int kByteMax = 255;

enum Column {
    ColChannel,
    ColDescription,
    ColExpression,
    ColFormat,
    ColTare,
    ColTimeout,
    ColDefault,
    ColUnderload,
    ColOverload,
    ColFunction,
    ColumnCount
};

// Chooses the entry holding `value`, adding it in order when the list does not offer it, so a
// workspace set up elsewhere keeps its setting.
void selectValue(QComboBox &combo, int value)
{
    int index = combo.findData(value);
    if (index < 0) {
        index = 0;
        while (index < combo.count() && combo.itemData(index).toInt() < value)
            ++index;
        combo.insertItem(index, QString::number(value), value);
    }
    combo.setCurrentIndex(index);
}

} // namespace

WorkSpaceFrm::WorkSpaceFrm(WorkspaceClass &workspace, ScriptEngine &engine, UserPrompts &prompts,
    bool commaDecimal, std::string settingsFile, QWidget *parent)
    : QDialog(parent)
    , m_workspace(workspace)
    , m_engine(engine)
    , m_prompts(prompts)
    , m_commaDecimal(commaDecimal)
    , m_settingsFile(std::move(settingsFile))
{
    setWindowTitle(tr("Configure Workspace"));
    setProperty(kHelpTopicProperty, "workspace-editor");
    buildControls();
    fillLists();
    connectControls();
    WorkspaceToForm();
    WorkSpaceToList();
}

void WorkSpaceFrm::buildControls()
{
    m_tbTitle = new QLineEdit(this);
    m_tbNotes = new QPlainTextEdit(this);
    m_tbNotes->setTabChangesFocus(true);
    m_tbNotes->setFixedHeight(
        m_tbNotes->fontMetrics().lineSpacing() * 4 + 2 * m_tbNotes->frameWidth() + 8);
    m_cbInterface = new QComboBox(this);
    m_cbPort = new PortComboBox(this);
    m_cbBaudrate = new QComboBox(this);
    m_cbChannels = new QComboBox(this);
    m_tbLogInterval = new NumericLineEdit(m_commaDecimal, {}, this);
    m_cbRFChannel = new QComboBox(this);
    m_cbAddress = new QComboBox(this);
    m_cbKeepAwake = new QCheckBox(tr("Keep Awake"), this);
    QGridLayout *general = labelledGrid(*this,
        { { m_tbTitle, "tbTitle", "lblTitle", "Title",
              "Enter a title for this workspace. This will be displayed in the window caption on "
              "the main window",
              nullptr, 0, 0, 3 },
            { m_tbNotes, "tbNotes", "lblNotes", "Notes", "Record notes about this workspace",
                nullptr, 1, 0, 3 },
            { m_cbInterface, "cbInterface", "lblInterface", "Interface",
                "Select the interface type of the attached base station.\nIf is a serial port "
                "base station you will also need to select the COM Port and Baudrate",
                nullptr, 2, 0 },
            { m_cbPort, "cbPort", "lblPort", "COM Port",
                "Select the COM port that the serial base station is connected to", nullptr, 3, 0 },
            { m_cbBaudrate, "cbBaudrate", "lblBaudrate", "Baudrate",
                "Select the baudrate that the serial base station is configured to", nullptr, 4,
                0 },
            { m_cbKeepAwake, "cbKeepAwake", nullptr, nullptr,
                "Whether to issue keep awake commands to acquisition modules.\nIf the modules "
                "have been configured with a SleepDelay you will need to select this option",
                nullptr, 5, 0 },
            { m_cbChannels, "cbChannels", "lblChannels", "Channels",
                "Select the number of channels to display and log", nullptr, 2, 2 },
            { m_tbLogInterval, "tbLogInterval", "lblLogInterval", "Log Interval (ms)",
                "Interval between logging data from all defined channels", "logging", 3, 2 },
            { m_cbRFChannel, "cbRFChannel", "lblRFChannel", "Radio Channel",
                "Select the radio channel to set the base station to. This must match the radio "
                "channel of the modules you wish to acquire data from",
                nullptr, 4, 2 },
            { m_cbAddress, "cbAddress", "lblAddress", "Basestation Address",
                "Select the base station address\n(Usually 1. Only applicable in multi base "
                "station systems where the default address has been changed)",
                nullptr, 5, 2 } });
    general->setColumnStretch(1, 1);
    general->setColumnStretch(3, 1);

    m_lv = new QTreeWidget(this);
    m_lv->setObjectName(QStringLiteral("LV"));
    m_lv->setToolTip(tr("Click on a channel to view or edit its properties"));
    m_lv->setColumnCount(ColumnCount);
    m_lv->setHeaderLabels(
        { tr("Channel"), tr("Description"), tr("Expression"), tr("Format"), tr("Tare"),
            tr("Timeout"), tr("Default"), tr("Underload"), tr("Overload"), tr("Function") });
    m_lv->setRootIsDecorated(false);
    m_lv->setItemsExpandable(false);
    m_lv->setUniformRowHeights(true);
    m_lv->setAllColumnsShowFocus(true);
    m_lv->setSelectionMode(QAbstractItemView::SingleSelection);
    m_lv->setSelectionBehavior(QAbstractItemView::SelectRows);
    const std::array<int, ColumnCount> widths = { 55, 130, 180, 65, 60, 55, 75, 75, 75, 100 };
    for (int column = 0; column < ColumnCount; ++column)
        m_lv->setColumnWidth(column, widths[static_cast<std::size_t>(column)]);
    m_lv->setMinimumHeight(m_lv->fontMetrics().height() * 6);

    m_channelBoxes = new QWidget(this);
    m_channelBoxes->setObjectName(QStringLiteral("channelBoxes"));
    m_tbCaption = new QLineEdit(m_channelBoxes);
    m_expression = new ExpressionBox(m_engine, m_channelBoxes);
    m_tbTag = &m_expression->edit();
    m_tbFormat = new NumericLineEdit(m_commaDecimal, "0.", m_channelBoxes);
    m_tbTareValue = new NumericLineEdit(m_commaDecimal, {}, m_channelBoxes);
    m_tbTimeout = new QLineEdit(m_channelBoxes);
    m_tbDefault = new QLineEdit(m_channelBoxes);
    m_tbUnderload = new QLineEdit(m_channelBoxes);
    m_tbOverload = new QLineEdit(m_channelBoxes);
    m_ddFunction = new QComboBox(m_channelBoxes);
    QGridLayout *channel = labelledGrid(*m_channelBoxes,
        { { m_tbCaption, "tbCaption", "lblCaption", "Title",
              "Select title caption for this channel", nullptr, 0, 0 },
            { m_tbFormat, "tbFormat", "lblFormat", "Format",
                "Specify display format for this channel. Use zeros and a decimal point to define "
                "the format. i.e.  00.0000",
                "number-formats", 1, 0 },
            { m_tbTareValue, "tbTareValue", "lblTareValue", "Tare Value",
                "The current tare value for this channel.\nYou can set this manually or it will "
                "be populated automatically when you click the Zero button on the main window",
                "zero-and-tare", 1, 2 },
            { m_tbTimeout, "tbTimeout", "lblTimeout", "Timeout (s)",
                "Timeout in seconds for all Zenta modules referenced in this channels "
                "expression.\nIf data has not arrived from an acquisition module for more than "
                "this time period the Default Value will be used in expressions that reference "
                "that module",
                nullptr, 1, 4 },
            { m_tbDefault, "tbDefault", "lblDefault", "Default Value",
                "The default value to use if data has not arrived from a module for longer than "
                "the defined Timeout",
                nullptr, 2, 0 },
            { m_tbUnderload, "tbUnderload", "lblUnderload", "Underload",
                "Set a net underload value below which the display will flash", "limits", 2, 2 },
            { m_tbOverload, "tbOverload", "lblOverload", "Overload",
                "Set a net overload value above which the display will flash", "limits", 2, 4 },
            { m_ddFunction, "ddFunction", "lblFunction", "Function",
                "Choose a function to apply to this channels value", "functions", 3, 0 } });
    // The expression box and its marks, where the grid puts one control.
    auto *tagLabel = new QLabel(tr("Expression"), m_channelBoxes);
    tagLabel->setObjectName(QStringLiteral("lblTag"));
    tagLabel->setBuddy(m_tbTag);
    m_tbTag->setObjectName(QStringLiteral("tbTag"));
    m_tbTag->setToolTip(
        tr("Enter an expression to be evaluated and displayed for this channel.\n"
           "Refer to an acquisition module by its Data Tag in triangular brackets, i.e. <FF12>\n"
           "Refer to another channel by its number in triangular brackets, i.e. <3>\n"
           "Combine values with operators, i.e. <FE12>+<FE23>*255\n"
           "Click the Help button to see the Expressions section of the help"));
    m_tbTag->setProperty(kHelpTopicProperty, "expressions");
    auto *modules = new QPushButton(tr("Modules\u2026"), m_channelBoxes);
    modules->setObjectName(QStringLiteral("btnModules"));
    modules->setToolTip(tr("Insert a module heard since start-up into the expression"));
    modules->setAutoDefault(false);
    connect(modules, &QPushButton::clicked, this, &WorkSpaceFrm::insertHeardModule);
    auto *expressionRow = new QHBoxLayout;
    expressionRow->addWidget(m_expression, 1);
    expressionRow->addWidget(modules);
    channel->addWidget(tagLabel, 0, 2);
    channel->addLayout(expressionRow, 0, 3, 1, 3);
    channel->setContentsMargins(0, 0, 0, 0);
    channel->setColumnStretch(1, 1);
    channel->setColumnStretch(3, 1);
    channel->setColumnStretch(5, 1);
    m_channelBoxes->setLayout(channel);
    // A workspace file gives back at most this much of a value; more would be cut on the next
    // load, changing the expression's meaning.
    for (QLineEdit *box : { m_tbTitle, m_tbCaption, m_tbTag, m_tbFormat })
        box->setMaxLength(static_cast<int>(kIniValueLength));

    auto *ok = new QPushButton(tr("OK"), this);
    ok->setObjectName(QStringLiteral("btnOK"));
    ok->setDefault(true);
    auto *help = new QPushButton(tr("Help"), this);
    help->setObjectName(QStringLiteral("btnHelp"));
    help->setToolTip(tr("Show help for this window"));
    // The help follows the focus, so pressing Help must leave it where the user was.
    help->setFocusPolicy(Qt::NoFocus);
    help->setAutoDefault(false);
    connect(ok, &QPushButton::clicked, this, &QDialog::accept);
    connect(help, &QPushButton::clicked, this, [] { sendHelpKey(); });
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(help);
    buttons->addStretch(1);
    buttons->addWidget(ok);

    // Everything but OK and Help scrolls, so the dialog fits any screen (1366 x 768, or a
    // large screen at 200 %) and its buttons are always in reach.
    auto *content = new QWidget;
    content->setObjectName(QStringLiteral("editorContent"));
    auto *fields = new QVBoxLayout(content);
    fields->addLayout(general);
    fields->addWidget(m_lv, 1);
    fields->addWidget(m_channelBoxes);
    auto *scroll = new QScrollArea(this);
    scroll->setObjectName(QStringLiteral("editorScroll"));
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setWidget(content);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(scroll, 1);
    layout->addLayout(buttons);

    // A comfortable size where the screen allows it.
    const QScreen *where
        = parentWidget() ? parentWidget()->screen() : QGuiApplication::primaryScreen();
    QSize size(900, 640);
    if (where)
        size = size.boundedTo(where->availableGeometry().size() * 0.95);
    resize(size);
}

void WorkSpaceFrm::fillLists()
{
    m_cbInterface->addItem(tr("USB Base Station"));
    m_cbInterface->addItem(tr("Serial Base Station"));
    m_cbPort->fill(m_settingsFile);
    for (const int baud : kBaudrates)
        m_cbBaudrate->addItem(QString::number(baud), baud);
    for (int count = 1; count <= WorkspaceClass::kMaxChannels; ++count)
        m_cbChannels->addItem(QString::number(count), count);
    for (int value = 0; value <= kByteMax; ++value) {
        m_cbRFChannel->addItem(QString::number(value), value);
        m_cbAddress->addItem(QString::number(value), value);
    }
    for (const char *name : kFunctionNames)
        m_ddFunction->addItem(tr(name));
}

void WorkSpaceFrm::connectControls()
{
    connect(
        m_cbInterface, &QComboBox::currentIndexChanged, this, &WorkSpaceFrm::showInterfaceChoice);
    connect(m_cbChannels, &QComboBox::currentIndexChanged, this, &WorkSpaceFrm::channelsChosen);
    connect(m_lv, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem *row) {
        if (row != nullptr)
            selectChannel(row->data(ColChannel, Qt::UserRole).toInt());
    });

    // Each channel box writes straight into the current channel and refreshes its row.
    auto edit = [this](QLineEdit *box, auto apply) {
        connect(box, &QLineEdit::textChanged, this, [this, apply](const QString &text) {
            ItemClass *item = m_loading ? nullptr : currentItem();
            if (item == nullptr)
                return;
            apply(*item, text);
            refreshRow(m_current);
        });
    };
    const bool comma = m_commaDecimal;
    edit(m_tbCaption,
        [](ItemClass &item, const QString &text) { item.Caption = text.toStdString(); });
    edit(
        m_tbFormat, [](ItemClass &item, const QString &text) { item.Format = text.toStdString(); });
    // A number box that does not read as a number leaves the setting as it was, and says so.
    auto number = [this](QLineEdit *box, auto read, auto apply) {
        connect(box, &QLineEdit::textChanged, this, [this, box, read, apply](const QString &text) {
            ItemClass *item = m_loading ? nullptr : currentItem();
            if (item == nullptr)
                return;
            const auto value = read(text.toStdString());
            showNumberState(*box, value.has_value());
            if (value) {
                apply(*item, *value);
                refreshRow(m_current);
            }
        });
    };
    const auto single = [comma](const std::string &text) { return numberBoxSingle(text, comma); };
    number(m_tbTareValue, single, [](ItemClass &item, float v) { item.TareValue = v; });
    number(
        m_tbTimeout, [comma](const std::string &text) { return numberBoxInteger(text, comma); },
        [](ItemClass &item, std::int16_t v) { item.Timeout = v; });
    // An empty Default box means no default: a channel in error keeps its last value.
    connect(m_tbDefault, &QLineEdit::textChanged, this, [this, comma](const QString &text) {
        ItemClass *item = m_loading ? nullptr : currentItem();
        if (item == nullptr)
            return;
        const bool empty = text.trimmed().isEmpty();
        const std::optional<float> value = numberBoxSingle(text.toStdString(), comma);
        showNumberState(*m_tbDefault, empty || value.has_value());
        if (empty || value) {
            item->Default = value;
            refreshRow(m_current);
        }
    });
    number(m_tbUnderload, single, [](ItemClass &item, float v) { item.Underload = v; });
    number(m_tbOverload, single, [](ItemClass &item, float v) { item.Overload = v; });
    connect(m_tbLogInterval, &QLineEdit::textChanged, this, [this](const QString &text) {
        showNumberState(
            *m_tbLogInterval, numberBoxLong(text.toStdString(), m_commaDecimal).has_value());
    });
    connect(m_tbTag, &QLineEdit::textChanged, this, [this](const QString &text) {
        ItemClass *item = m_loading ? nullptr : currentItem();
        if (item == nullptr)
            return;
        m_expression->check(currentItem() != nullptr);
        // Kept even when it does not evaluate: the user may be half-way through it.
        item->DataTagList = text.toStdString();
        refreshRow(m_current);
    });
    connect(m_ddFunction, &QComboBox::currentIndexChanged, this, [this](int index) {
        ItemClass *item = m_loading ? nullptr : currentItem();
        if (item == nullptr || index < 0)
            return;
        item->Functionality = static_cast<ChannelFunction>(index);
        refreshRow(m_current);
    });
}

void WorkSpaceFrm::WorkspaceToForm()
{
    const QSignalBlocker blockChannels(m_cbChannels);
    m_tbTitle->setText(QString::fromStdString(m_workspace.Title));
    QString notes = QString::fromStdString(m_workspace.Notes);
    notes.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    notes.replace(QLatin1Char('\r'), QLatin1Char('\n'));
    m_tbNotes->setPlainText(notes);
    m_cbInterface->setCurrentIndex(m_workspace.Interface != 0 ? 1 : 0);
    showInterfaceChoice(m_cbInterface->currentIndex());
    m_cbPort->selectPort(m_workspace.Port);
    selectValue(*m_cbBaudrate, m_workspace.Baudrate);
    const int channels = m_workspace.Channels;
    m_cbChannels->setCurrentIndex(
        channels >= 1 && channels <= WorkspaceClass::kMaxChannels ? channels - 1 : -1);
    m_tbLogInterval->setText(QString::number(m_workspace.LogInterval));
    selectValue(*m_cbRFChannel, m_workspace.RFChannel);
    selectValue(*m_cbAddress, m_workspace.BSAddress);
    m_cbKeepAwake->setChecked(m_workspace.KeepAwake != 0);
}

void WorkSpaceFrm::WorkSpaceToList()
{
    const int keep = m_current;
    {
        const QSignalBlocker block(m_lv);
        m_lv->clear();
        const int count = static_cast<int>(m_workspace.Items.size());
        for (int channel = 1; channel <= count; ++channel) {
            auto *row = new QTreeWidgetItem(m_lv);
            fillRow(*row, channel, m_workspace.item(channel));
        }
    }
    const int count = static_cast<int>(m_workspace.Items.size());
    selectChannel(keep >= 1 && keep <= count ? keep : (count > 0 ? 1 : 0));
}

void WorkSpaceFrm::FormToWorkspace()
{
    m_workspace.Title = m_tbTitle->text().toStdString();
    QString notes = m_tbNotes->toPlainText();
    notes.replace(QLatin1Char('\n'), QLatin1String("\r\n"));
    m_workspace.Notes = notes.toStdString();
    // Any non-zero interface means serial: keep the stored code unless the choice changed.
    const bool serial = m_cbInterface->currentIndex() == 1;
    if ((m_workspace.Interface != 0) != serial)
        m_workspace.Interface = serial ? 1 : 0;
    if (m_cbPort->currentIndex() >= 0) {
        m_workspace.Port = static_cast<std::int16_t>(m_cbPort->port());
        if (serial)
            m_cbPort->mapChosenPort(m_prompts);
    }
    if (m_cbBaudrate->currentIndex() >= 0)
        m_workspace.Baudrate = m_cbBaudrate->currentData().toInt();
    if (const auto interval = numberBoxLong(m_tbLogInterval->text().toStdString(), m_commaDecimal))
        m_workspace.LogInterval = *interval;
    if (m_cbRFChannel->currentIndex() >= 0)
        m_workspace.RFChannel = static_cast<std::int16_t>(m_cbRFChannel->currentData().toInt());
    if (m_cbAddress->currentIndex() >= 0)
        m_workspace.BSAddress = static_cast<std::int16_t>(m_cbAddress->currentData().toInt());
    if ((m_workspace.KeepAwake != 0) != m_cbKeepAwake->isChecked())
        m_workspace.KeepAwake = m_cbKeepAwake->isChecked() ? 1 : 0;
}

void WorkSpaceFrm::insertHeardModule()
{
    HeardModulesDialog modules(heardTags(m_engine.sclass()), m_commaDecimal, this);
    if (modules.exec() != QDialog::Accepted)
        return;
    // As if typed: the expression is checked and goes into the channel.
    m_tbTag->insert(modules.reference());
    m_tbTag->setFocus();
}

int WorkSpaceFrm::FindItem(int channel) const
{
    for (int row = 0; row < m_lv->topLevelItemCount(); ++row) {
        if (m_lv->topLevelItem(row)->data(ColChannel, Qt::UserRole).toInt() == channel)
            return row;
    }
    return -1;
}

void WorkSpaceFrm::done(int result)
{
    if (!m_returned) {
        m_returned = true;
        FormToWorkspace();
    }
    QDialog::done(result);
}

void WorkSpaceFrm::showEvent(QShowEvent *event)
{
    m_returned = false; // a dialog shown again hands its settings back again
    QDialog::showEvent(event);
}

void WorkSpaceFrm::channelsChosen(int index)
{
    const int wanted = index + 1;
    const int current = m_workspace.Channels;
    if (index < 0 || wanted == current)
        return;
    if (wanted > current) {
        for (int channel = static_cast<int>(m_workspace.Items.size()) + 1; channel <= wanted;
             ++channel)
            m_workspace.Items.push_back(newChannel(channel));
    } else {
        const PromptAnswer answer = m_prompts.message("Change Channels",
            "If you reduce the number of channels then the settings for the unused channels "
            "will be lost!\r\nAre you sure you want to continue?",
            PromptIcon::Question, PromptButtons::YesNo);
        if (answer != PromptAnswer::Yes) {
            const QSignalBlocker block(m_cbChannels);
            m_cbChannels->setCurrentIndex(current >= 1 ? current - 1 : -1);
            return;
        }
        if (static_cast<int>(m_workspace.Items.size()) > wanted)
            m_workspace.Items.resize(static_cast<std::size_t>(wanted));
    }
    m_workspace.Channels = static_cast<std::int16_t>(wanted);
    WorkSpaceToList();
}

void WorkSpaceFrm::selectChannel(int channel)
{
    m_current = channel;
    const int row = FindItem(channel);
    {
        const QSignalBlocker block(m_lv);
        m_lv->setCurrentItem(row >= 0 ? m_lv->topLevelItem(row) : nullptr);
    }
    itemToBoxes();
}

void WorkSpaceFrm::itemToBoxes()
{
    const ItemClass *item = currentItem();
    m_loading = true;
    if (item != nullptr) {
        m_tbCaption->setText(QString::fromStdString(item->Caption));
        m_tbTag->setText(QString::fromStdString(item->DataTagList));
        m_tbFormat->setText(QString::fromStdString(item->Format));
        m_tbTareValue->setText(numberText(item->TareValue));
        m_tbTimeout->setText(QString::number(item->Timeout));
        m_tbDefault->setText(item->Default ? numberText(*item->Default) : QString());
        m_tbUnderload->setText(numberText(item->Underload));
        m_tbOverload->setText(numberText(item->Overload));
        const int function = functionCode(item->Functionality);
        m_ddFunction->setCurrentIndex(
            function >= 0 && function < m_ddFunction->count() ? function : -1);
    } else {
        for (QLineEdit *box : { m_tbCaption, m_tbTag, m_tbFormat, m_tbTareValue, m_tbTimeout,
                 m_tbDefault, m_tbUnderload, m_tbOverload })
            box->clear();
        m_ddFunction->setCurrentIndex(-1);
    }
    m_loading = false;
    for (QLineEdit *box : { m_tbTareValue, m_tbTimeout, m_tbDefault, m_tbUnderload, m_tbOverload })
        showNumberState(*box, true);
    m_channelBoxes->setEnabled(item != nullptr);
    m_expression->check(currentItem() != nullptr);
}

void WorkSpaceFrm::refreshRow(int channel)
{
    const int row = FindItem(channel);
    if (row >= 0)
        fillRow(*m_lv->topLevelItem(row), channel, m_workspace.item(channel));
}

void WorkSpaceFrm::fillRow(QTreeWidgetItem &row, int channel, const ItemClass &item) const
{
    row.setData(ColChannel, Qt::UserRole, channel);
    row.setText(ColChannel, QString::number(channel));
    row.setText(ColDescription, QString::fromStdString(item.Caption));
    row.setText(ColExpression, QString::fromStdString(item.DataTagList));
    row.setText(ColFormat, QString::fromStdString(item.Format));
    row.setText(ColTare, numberText(item.TareValue));
    row.setText(ColTimeout, QString::number(item.Timeout));
    row.setText(ColDefault, item.Default ? numberText(*item.Default) : QString());
    row.setText(ColUnderload, numberText(item.Underload));
    row.setText(ColOverload, numberText(item.Overload));
    const int function = functionCode(item.Functionality);
    row.setText(ColFunction,
        function >= 0 && function < static_cast<int>(kFunctionNames.size())
            ? m_ddFunction->itemText(function)
            : QString::number(function));
}

void WorkSpaceFrm::showInterfaceChoice(int index)
{
    const bool serial = index == 1;
    m_cbPort->setEnabled(serial);
    m_cbBaudrate->setEnabled(serial);
}

ItemClass *WorkSpaceFrm::currentItem()
{
    if (m_current < 1 || m_current > static_cast<int>(m_workspace.Items.size()))
        return nullptr;
    return &m_workspace.item(m_current);
}

QString WorkSpaceFrm::numberText(float value) const
{
    return QString::fromStdString(singleText(value, m_commaDecimal ? ',' : '.'));
}

} // namespace corvalog
