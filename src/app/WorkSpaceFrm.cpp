#include "WorkSpaceFrm.h"

#include "HelpTopics.h"
#include "runtime/Convert.h"
#include "runtime/NumberText.h"
#include "runtime/UserPrompts.h"
#include "runtime/VbError.h"
#include "values/ExpressionCheck.h"
#include "values/ScriptEngine.h"
#include "values/ValidateModule.h"
#include "workspace/INIFileModule.h"
#include "workspace/WorkspaceClass.h"

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPainter>
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

constexpr int kPorts = 32;
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

const QColor kErrorText(255, 0, 0);

// A text box that lets through only what the numeric key filter allows. Typing is filtered
// key by key; whatever arrives in one piece (paste, middle click, input method) keeps only the
// characters the filter would have let be typed. Drops are refused: they would bypass both.
class NumericLineEdit : public QLineEdit
{
public:
    NumericLineEdit(bool commaDecimal, std::string extra, QWidget *parent)
        : QLineEdit(parent)
        , m_commaDecimal(commaDecimal)
        , m_extra(std::move(extra))
    {
        setAcceptDrops(false);
    }

protected:
    void keyPressEvent(QKeyEvent *event) override
    {
        if (event->matches(QKeySequence::Paste)) {
            insertFiltered(QGuiApplication::clipboard()->text(QClipboard::Clipboard));
            event->accept();
            return;
        }
        const QString typed = event->text();
        const bool command = event->modifiers() & (Qt::ControlModifier | Qt::MetaModifier);
        if (!command && typed.size() == 1 && typed.at(0).isPrint() && !isReadOnly()) {
            const QChar key = typed.at(0);
            int start = 0;
            int length = 0;
            replacedRange(start, length);
            if (key.unicode() > 0x7F
                || !NumericKeyAllowed(text().toLatin1().toStdString(), start, length,
                    static_cast<char>(key.unicode()), m_commaDecimal, m_extra)) {
                event->accept(); // swallowed, as a refused key should be
                return;
            }
        }
        QLineEdit::keyPressEvent(event);
    }

    void contextMenuEvent(QContextMenuEvent *event) override
    {
        QMenu *menu = createStandardContextMenu();
        // The standard Paste entry is known by its own (translated) caption.
        const QString pasteCaption = QLineEdit::tr("&Paste");
        for (QAction *action : menu->actions()) {
            if (action->text().startsWith(pasteCaption)) {
                disconnect(action, nullptr, this, nullptr);
                connect(action, &QAction::triggered, this,
                    [this] { insertFiltered(QGuiApplication::clipboard()->text()); });
            }
        }
        menu->setAttribute(Qt::WA_DeleteOnClose);
        menu->popup(event->globalPos());
    }

    void mouseReleaseEvent(QMouseEvent *event) override
    {
        if (event->button() == Qt::MiddleButton && !isReadOnly()
            && QGuiApplication::clipboard()->supportsSelection()) {
            deselect();
            insertFiltered(QGuiApplication::clipboard()->text(QClipboard::Selection));
            event->accept();
            return;
        }
        QLineEdit::mouseReleaseEvent(event);
    }

    void inputMethodEvent(QInputMethodEvent *event) override
    {
        if (!event->commitString().isEmpty()) {
            event->setCommitString(filtered(event->commitString()), event->replacementStart(),
                event->replacementLength());
        }
        QLineEdit::inputMethodEvent(event);
    }

private:
    void replacedRange(int &start, int &length) const
    {
        start = hasSelectedText() ? selectionStart() : cursorPosition();
        length = hasSelectedText() ? static_cast<int>(selectedText().size()) : 0;
    }

    // Latin-1 keeps one byte per UTF-16 unit, so positions stay valid; anything beyond it
    // becomes '?', which the filter refuses.
    QString filtered(const QString &pasted) const
    {
        int start = 0;
        int length = 0;
        replacedRange(start, length);
        return QString::fromLatin1(NumericPasteFilter(text().toLatin1().toStdString(), start,
            length, pasted.toLatin1().toStdString(), m_commaDecimal, m_extra));
    }

    void insertFiltered(const QString &pasted)
    {
        if (isReadOnly())
            return;
        const QString kept = filtered(pasted);
        if (!kept.isEmpty())
            insert(kept);
    }

    bool m_commaDecimal;
    std::string m_extra;
};

QPixmap markPixmap(bool tick)
{
    constexpr int kSide = 16;
    const qreal ratio = qApp->devicePixelRatio();
    QPixmap pixmap(QSize(kSide, kSide) * ratio);
    pixmap.setDevicePixelRatio(ratio);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(tick ? QColor(0, 150, 0) : QColor(210, 0, 0), 2.5, Qt::SolidLine,
        Qt::RoundCap, Qt::RoundJoin));
    if (tick) {
        const QPointF stroke[] = { { 2.5, 8.5 }, { 6.5, 12.5 }, { 13.5, 3.5 } };
        painter.drawPolyline(stroke, 3);
    } else {
        painter.drawLine(QPointF(4, 4), QPointF(12, 12));
        painter.drawLine(QPointF(12, 4), QPointF(4, 12));
    }
    return pixmap;
}

QString tip(const char *text)
{
    return QString::fromUtf8(text);
}

// Shows whether a number box holds a number: its text turns red and its tooltip says that the
// setting keeps its value, until the box reads as a number again.
void showNumberState(QLineEdit &box, bool isNumber)
{
    if (!box.property("plainToolTip").isValid())
        box.setProperty("plainToolTip", box.toolTip());
    const QString plain = box.property("plainToolTip").toString();
    QPalette palette = box.palette();
    palette.setColor(
        QPalette::Text, isNumber ? QApplication::palette(&box).color(QPalette::Text) : kErrorText);
    box.setPalette(palette);
    box.setProperty("notANumber", !isNumber);
    box.setToolTip(isNumber
            ? plain
            : QStringLiteral("This is not a number: the setting keeps its value.\n\n") + plain);
}

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
    bool commaDecimal, QWidget *parent)
    : QDialog(parent)
    , m_workspace(workspace)
    , m_engine(engine)
    , m_prompts(prompts)
    , m_commaDecimal(commaDecimal)
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
    auto label = [this](const char *name, const char *text, QWidget *buddy) {
        auto *caption = new QLabel(tip(text), this);
        caption->setObjectName(QString::fromLatin1(name));
        caption->setBuddy(buddy);
        return caption;
    };
    auto named = [](QWidget *widget, const char *name, const char *toolTip) {
        widget->setObjectName(QString::fromLatin1(name));
        widget->setToolTip(tip(toolTip));
    };

    m_tbTitle = new QLineEdit(this);
    named(m_tbTitle, "tbTitle",
        "Enter a title for this workspace. This will be displayed in the window caption on the "
        "main window");
    m_tbNotes = new QPlainTextEdit(this);
    named(m_tbNotes, "tbNotes", "Record notes about this workspace");
    m_tbNotes->setTabChangesFocus(true);
    m_tbNotes->setFixedHeight(
        m_tbNotes->fontMetrics().lineSpacing() * 4 + 2 * m_tbNotes->frameWidth() + 8);
    m_cbInterface = new QComboBox(this);
    named(m_cbInterface, "cbInterface",
        "Select the interface type of the attached base station.\nIf is a serial port base "
        "station you will also need to select the COM Port and Baudrate");
    m_cbPort = new QComboBox(this);
    named(m_cbPort, "cbPort", "Select the COM port that the serial base station is connected to");
    m_cbBaudrate = new QComboBox(this);
    named(m_cbBaudrate, "cbBaudrate",
        "Select the baudrate that the serial base station is configured to");
    m_cbChannels = new QComboBox(this);
    named(m_cbChannels, "cbChannels", "Select the number of channels to display and log");
    m_tbLogInterval = new NumericLineEdit(m_commaDecimal, {}, this);
    named(m_tbLogInterval, "tbLogInterval",
        "Interval between logging data from all defined channels");
    m_tbLogInterval->setProperty(kHelpTopicProperty, "logging");
    m_cbRFChannel = new QComboBox(this);
    named(m_cbRFChannel, "cbRFChannel",
        "Select the radio channel to set the base station to. This must match the radio "
        "channel of the modules you wish to acquire data from");
    m_cbAddress = new QComboBox(this);
    named(m_cbAddress, "cbAddress",
        "Select the base station address\n(Usually 1. Only applicable in multi base station "
        "systems where the default address has been changed)");
    m_cbKeepAwake = new QCheckBox(tr("Keep Awake"), this);
    named(m_cbKeepAwake, "cbKeepAwake",
        "Whether to issue keep awake commands to acquisition modules.\nIf the modules have "
        "been configured with a SleepDelay you will need to select this option");

    auto *general = new QGridLayout;
    general->addWidget(label("lblTitle", "Title", m_tbTitle), 0, 0);
    general->addWidget(m_tbTitle, 0, 1, 1, 3);
    general->addWidget(label("lblNotes", "Notes", m_tbNotes), 1, 0, Qt::AlignTop);
    general->addWidget(m_tbNotes, 1, 1, 1, 3);
    general->addWidget(label("lblInterface", "Interface", m_cbInterface), 2, 0);
    general->addWidget(m_cbInterface, 2, 1);
    general->addWidget(label("lblPort", "COM Port", m_cbPort), 3, 0);
    general->addWidget(m_cbPort, 3, 1);
    general->addWidget(label("lblBaudrate", "Baudrate", m_cbBaudrate), 4, 0);
    general->addWidget(m_cbBaudrate, 4, 1);
    general->addWidget(m_cbKeepAwake, 5, 1);
    general->addWidget(label("lblChannels", "Channels", m_cbChannels), 2, 2);
    general->addWidget(m_cbChannels, 2, 3);
    general->addWidget(label("lblLogInterval", "Log Interval (ms)", m_tbLogInterval), 3, 2);
    general->addWidget(m_tbLogInterval, 3, 3);
    general->addWidget(label("lblRFChannel", "Radio Channel", m_cbRFChannel), 4, 2);
    general->addWidget(m_cbRFChannel, 4, 3);
    general->addWidget(label("lblAddress", "Basestation Address", m_cbAddress), 5, 2);
    general->addWidget(m_cbAddress, 5, 3);
    general->setColumnStretch(1, 1);
    general->setColumnStretch(3, 1);

    m_lv = new QTreeWidget(this);
    named(m_lv, "LV", "Click on a channel to view or edit its properties");
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

    m_channelBoxes = new QWidget(this);
    m_channelBoxes->setObjectName(QStringLiteral("channelBoxes"));
    m_tbCaption = new QLineEdit(m_channelBoxes);
    named(m_tbCaption, "tbCaption", "Select title caption for this channel");
    m_tbTag = new QLineEdit(m_channelBoxes);
    named(m_tbTag, "tbTag",
        "Enter an expression to be evaluated and displayed for this channel.\n"
        "Refer to an acquisition module by its Data Tag in triangular brackets, i.e. <FF12>\n"
        "Refer to another channel by its number in triangular brackets, i.e. <3>\n"
        "Combine values with operators, i.e. <FE12>+<FE23>*255\n"
        "Click the Help button to see the Expressions section of the help");
    m_tbTag->setProperty(kHelpTopicProperty, "expressions");
    // A workspace file gives back at most this much of a value; more would be cut on the next
    // load, changing the expression's meaning.
    m_normalExpression = m_tbTag->palette();
    m_tick = new QLabel(m_channelBoxes);
    named(m_tick, "Tick", "The expression is valid");
    m_tick->setPixmap(markPixmap(true));
    m_cross = new QLabel(m_channelBoxes);
    m_cross->setObjectName(QStringLiteral("Cross"));
    m_cross->setPixmap(markPixmap(false));
    m_cross->hide();
    m_tbFormat = new NumericLineEdit(m_commaDecimal, "0.", m_channelBoxes);
    named(m_tbFormat, "tbFormat",
        "Specify display format for this channel. Use zeros and a decimal point to define the "
        "format. i.e.  00.0000");
    m_tbFormat->setProperty(kHelpTopicProperty, "number-formats");
    // A workspace file gives back at most this much of a value; more would be cut on the next
    // load, changing the expression's meaning.
    for (QLineEdit *box : { m_tbTitle, m_tbCaption, m_tbTag, m_tbFormat })
        box->setMaxLength(static_cast<int>(kIniValueLength));
    m_tbTareValue = new NumericLineEdit(m_commaDecimal, {}, m_channelBoxes);
    named(m_tbTareValue, "tbTareValue",
        "The current tare value for this channel.\nYou can set this manually or it will be "
        "populated automatically when you click the Zero button on the main window");
    m_tbTareValue->setProperty(kHelpTopicProperty, "zero-and-tare");
    m_tbTimeout = new QLineEdit(m_channelBoxes);
    named(m_tbTimeout, "tbTimeout",
        "Timeout in seconds for all Zenta modules referenced in this channels expression.\nIf "
        "data has not arrived from an acquisition module for more than this time period the "
        "Default Value will be used in expressions that reference that module");
    m_tbDefault = new QLineEdit(m_channelBoxes);
    named(m_tbDefault, "tbDefault",
        "The default value to use if data has not arrived from a module for longer than the "
        "defined Timeout");
    m_tbUnderload = new QLineEdit(m_channelBoxes);
    named(m_tbUnderload, "tbUnderload",
        "Set a net underload value below which the display will flash");
    m_tbUnderload->setProperty(kHelpTopicProperty, "limits");
    m_tbOverload = new QLineEdit(m_channelBoxes);
    named(
        m_tbOverload, "tbOverload", "Set a net overload value above which the display will flash");
    m_tbOverload->setProperty(kHelpTopicProperty, "limits");
    m_ddFunction = new QComboBox(m_channelBoxes);
    named(m_ddFunction, "ddFunction", "Choose a function to apply to this channels value");
    m_ddFunction->setProperty(kHelpTopicProperty, "functions");

    auto *expression = new QHBoxLayout;
    expression->setContentsMargins(0, 0, 0, 0);
    expression->addWidget(m_tbTag, 1);
    expression->addWidget(m_tick);
    expression->addWidget(m_cross);

    auto *channel = new QGridLayout(m_channelBoxes);
    channel->setContentsMargins(0, 0, 0, 0);
    channel->addWidget(label("lblCaption", "Title", m_tbCaption), 0, 0);
    channel->addWidget(m_tbCaption, 0, 1);
    channel->addWidget(label("lblTag", "Expression", m_tbTag), 0, 2);
    channel->addLayout(expression, 0, 3, 1, 3);
    channel->addWidget(label("lblFormat", "Format", m_tbFormat), 1, 0);
    channel->addWidget(m_tbFormat, 1, 1);
    channel->addWidget(label("lblTareValue", "Tare Value", m_tbTareValue), 1, 2);
    channel->addWidget(m_tbTareValue, 1, 3);
    channel->addWidget(label("lblTimeout", "Timeout (s)", m_tbTimeout), 1, 4);
    channel->addWidget(m_tbTimeout, 1, 5);
    channel->addWidget(label("lblDefault", "Default Value", m_tbDefault), 2, 0);
    channel->addWidget(m_tbDefault, 2, 1);
    channel->addWidget(label("lblUnderload", "Underload", m_tbUnderload), 2, 2);
    channel->addWidget(m_tbUnderload, 2, 3);
    channel->addWidget(label("lblOverload", "Overload", m_tbOverload), 2, 4);
    channel->addWidget(m_tbOverload, 2, 5);
    channel->addWidget(label("lblFunction", "Function", m_ddFunction), 3, 0);
    channel->addWidget(m_ddFunction, 3, 1);
    channel->setColumnStretch(1, 1);
    channel->setColumnStretch(3, 1);
    channel->setColumnStretch(5, 1);

    auto *ok = new QPushButton(tr("OK"), this);
    ok->setObjectName(QStringLiteral("btnOK"));
    ok->setDefault(true);
    auto *help = new QPushButton(tr("Help"), this);
    named(help, "btnHelp", "Show help for this window");
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
    m_lv->setMinimumHeight(m_lv->fontMetrics().height() * 6);
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
    for (int port = 1; port <= kPorts; ++port)
        m_cbPort->addItem(QString::number(port), port);
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
        checkExpression();
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
    selectValue(*m_cbPort, m_workspace.Port);
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
    if (m_cbPort->currentIndex() >= 0)
        m_workspace.Port = static_cast<std::int16_t>(m_cbPort->currentData().toInt());
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
    checkExpression();
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

void WorkSpaceFrm::checkExpression()
{
    if (currentItem() == nullptr) {
        m_tick->hide();
        m_cross->hide();
        m_tbTag->setPalette(m_normalExpression);
        return;
    }
    const ExpressionCheck check
        = corvalog::checkExpression(m_engine, m_tbTag->text().toStdString());
    const bool invalid = !check.valid;
    m_tick->setVisible(!invalid);
    m_cross->setVisible(invalid);
    if (invalid) {
        m_cross->setToolTip(
            QStringLiteral("Error in expression: ") + QString::fromStdString(check.description));
        QPalette palette = m_normalExpression;
        palette.setColor(QPalette::Text, kErrorText);
        m_tbTag->setPalette(palette);
    } else {
        m_cross->setToolTip(QString());
        m_tbTag->setPalette(m_normalExpression);
    }
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
