#include "DriverDialog.h"

#include "HelpTopics.h"
#include "LabelledGrid.h"
#include "acquisition/DriverSettings.h"
#include "acquisition/ProviderSource.h"
#include "runtime/UserPrompts.h"
#include "workspace/INIFileModule.h"

#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>
#include <array>

namespace corvalog {

namespace {

struct SourceKind {
    const char *caption;
    const char *name; // what a source text of this kind starts with
    const char *sample; // the text choosing the kind writes
};

constexpr std::array<SourceKind, 5> kKinds = { {
    { "Simulated base station (built in)", "sim", "sim" },
    { "Serial base station", "serial", "serial" },
    { "Recording replay", "replay", "replay:" },
    { "UDP receiver", "udp", "udp:5000" },
    { "Broker (relayed base stations)", "mqtt", "mqtt://broker/plant" },
} };

// The kind a source text names, -1 for none.
int kindOf(const QString &text)
{
    QString name = text.section(QLatin1Char(':'), 0, 0);
    if (name == QLatin1String("mqtts"))
        name = QStringLiteral("mqtt"); // the same broker source, over TLS
    for (std::size_t k = 0; k < kKinds.size(); ++k) {
        if (name == QLatin1String(kKinds[k].name))
            return static_cast<int>(k);
    }
    return -1;
}

} // namespace

DriverDialog::DriverDialog(const QString &source, const QString &sourceOverride, QWidget *parent)
    : QDialog(parent)
{
    setObjectName(QStringLiteral("DriverDialog"));
    setWindowTitle(tr("Base Station Driver"));
    setProperty(kHelpTopicProperty, QStringLiteral("base-station-driver"));

    m_kind = new QComboBox(this);
    for (const SourceKind &kind : kKinds)
        m_kind->addItem(tr(kind.caption));
    m_source = new QLineEdit(this);
    // The settings file gives back no more than this.
    m_source->setMaxLength(static_cast<int>(kIniValueLength));
    QGridLayout *grid = labelledGrid(*this,
        { { m_kind, "cbKind", "lblKind", "Driver", "Where the program's packets come from", nullptr,
              0, 0 },
            { m_source, "tbSource", "lblSource", "Source",
                "The source as CORVALOG_SOURCE names it: sim[:SEED], serial, "
                "serial:DEVICE[:BAUD], replay:FILE, udp:[HOST:]PORT or "
                "mqtt://HOST[:PORT]/PREFIX",
                nullptr, 1, 0 } });
    grid->setColumnStretch(1, 1);

    auto *serialForms = new QLabel(tr("serial opens the workspace's Interface, Port and Baudrate; "
                                      "serial:DEVICE[:BAUD] opens that device; "
                                      "mqtt://HOST[:PORT]/PREFIX reads every base station relayed "
                                      "to a broker under PREFIX (mqtts:// with TLS)."),
        this);
    serialForms->setObjectName(QStringLiteral("lblSerialForms"));
    serialForms->setWordWrap(true);
    m_error = new QLabel(this);
    m_error->setObjectName(QStringLiteral("lblError"));
    m_error->setWordWrap(true);
    QPalette red = m_error->palette();
    red.setColor(QPalette::WindowText, QColor(210, 0, 0));
    m_error->setPalette(red);
    auto *overrides = new QLabel(
        tr("CORVALOG_SOURCE=%1 overrides this setting while it is set.").arg(sourceOverride), this);
    overrides->setObjectName(QStringLiteral("lblOverride"));
    overrides->setWordWrap(true);
    overrides->setVisible(!sourceOverride.isEmpty());

    m_ok = new QPushButton(tr("OK"), this);
    m_ok->setObjectName(QStringLiteral("btnOK"));
    m_ok->setDefault(true);
    auto *cancel = new QPushButton(tr("Cancel"), this);
    cancel->setObjectName(QStringLiteral("btnCancel"));
    auto *help = new QPushButton(tr("Help"), this);
    help->setObjectName(QStringLiteral("btnHelp"));
    help->setFocusPolicy(Qt::NoFocus);
    help->setAutoDefault(false);
    connect(m_ok, &QPushButton::clicked, this, &QDialog::accept);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(help, &QPushButton::clicked, this, [] { sendHelpKey(); });
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(help);
    buttons->addStretch(1);
    buttons->addWidget(m_ok);
    buttons->addWidget(cancel);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(grid);
    layout->addWidget(serialForms);
    layout->addWidget(m_error);
    layout->addWidget(overrides);
    layout->addStretch(1);
    layout->addLayout(buttons);

    connect(m_kind, &QComboBox::currentIndexChanged, this, &DriverDialog::kindChosen);
    connect(m_source, &QLineEdit::textChanged, this, &DriverDialog::sourceEdited);
    m_source->setText(source);
    sourceEdited(source); // also when the text is empty and so did not change
    resize(sizeHint().expandedTo(QSize(460, 0)));
}

QString DriverDialog::source() const
{
    return m_source->text().trimmed();
}

void DriverDialog::kindChosen(int index)
{
    if (m_following || index < 0)
        return;
    m_source->setText(QString::fromLatin1(kKinds[static_cast<std::size_t>(index)].sample));
    m_source->setFocus();
    m_source->end(false);
}

void DriverDialog::sourceEdited(const QString &)
{
    const QString text = source();
    {
        m_following = true;
        m_kind->setCurrentIndex(kindOf(text));
        m_following = false;
    }
    std::string error;
    const bool valid = ProviderSource::parse(text.toStdString(), &error).has_value();
    m_ok->setEnabled(valid);
    m_error->setText(valid ? QString() : QString::fromStdString(error));
    m_error->setVisible(!valid);
}

bool editDriverSource(const std::string &settingsFile, const std::string &sourceOverride,
    UserPrompts &prompts, QWidget *parent)
{
    DriverDialog dialog(QString::fromStdString(readDriverSettings(settingsFile).source),
        QString::fromStdString(sourceOverride), parent);
    if (dialog.exec() != QDialog::Accepted)
        return false;
    const std::string source = dialog.source().toStdString();
    if (!writeDriverSource(settingsFile, source)) {
        prompts.message("Warning",
            "The driver setting " + source + " could not be saved to " + settingsFile + ".",
            PromptIcon::Exclamation, PromptButtons::Ok);
        return false;
    }
    return true;
}

} // namespace corvalog
