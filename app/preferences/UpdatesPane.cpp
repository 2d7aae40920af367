#include "app/preferences/UpdatesPane.h"

#include "app/AppSettings.h"
#include "app/VXApplication.h"
#include "app/preferences/SettingBinding.h"
#include "ui_UpdatesPane.h"
#include "update/UpdateSettings.h"

namespace runebook {

using namespace Qt::StringLiterals;

UpdatesPane::UpdatesPane(QWidget *parent) : QWidget(parent), m_ui(std::make_unique<Ui::UpdatesPane>())
{
    m_ui->setupUi(this);
    SettingBinding::bind(m_ui->feed, Settings::kUpdateFeed);
    SettingBinding::bind(m_ui->server, Settings::kUpdateServer);
    SettingBinding::bind(m_ui->checksAtStart, Settings::kChecksForUpdatesAtStart);
    bindOffer();
    for (QLineEdit *field : {m_ui->feed, m_ui->server})
        connect(field, &QLineEdit::textChanged, this, &UpdatesPane::checkAddresses);
    connect(m_ui->checkNow, &QPushButton::clicked, this, [] {
        if (auto *application = qobject_cast<VXApplication *>(qApp))
            application->checkForUpdates();
    });
    checkAddresses();
}

UpdatesPane::~UpdatesPane() = default;

void UpdatesPane::bindOffer()
{
    const auto show = [this] {
        const bool isNewest = Settings::kOffersNewestVersion.value();
        (isNewest ? m_ui->newest : m_ui->first)->setChecked(true);
    };
    show();
    connect(m_ui->newest, &QRadioButton::toggled, this,
            [](bool isNewest) { Settings::kOffersNewestVersion.set(isNewest); });
    Settings::kOffersNewestVersion.onChange(this, show);
}

void UpdatesPane::checkAddresses()
{
    QStringList problems;
    for (const QLineEdit *field : {m_ui->feed, m_ui->server}) {
        const QString address = field->text().trimmed();
        if (!address.isEmpty() && !PageFetcher::isAllowed(QUrl(address, QUrl::StrictMode)))
            problems
                << tr("%1: only addresses that begin with “https://” are used.").arg(field->accessibleName());
    }
    if (m_ui->feed->text().trimmed().isEmpty())
        problems << tr("Without the address of a feed nothing is looked for.");
    m_ui->status->setText(problems.join(u'\n'));
    m_ui->checksAtStart->setEnabled(!m_ui->feed->text().trimmed().isEmpty());
}

} // namespace runebook
