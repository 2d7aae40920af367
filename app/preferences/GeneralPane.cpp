#include "app/preferences/GeneralPane.h"

#include "app/AppSettings.h"
#include "app/preferences/SettingBinding.h"
#include "document/DocumentSettings.h"
#include "editing/records/GlyphTableView.h"
#include "editing/window/VXWindowController.h"
#include "editing/window/WindowSettings.h"
#include "platform/StandardFolders.h"
#include "platform/documents/DocumentController.h"
#include "ui_GeneralPane.h"

#include <QDesktopServices>
#include <QDir>
#include <QUrl>

namespace runebook {

using namespace Qt::StringLiterals;

GeneralPane::GeneralPane(QWidget *parent) : QWidget(parent), m_ui(std::make_unique<Ui::GeneralPane>())
{
    m_ui->setupUi(this);
    SettingBinding::bind(m_ui->restoreWindows, Settings::kRestoresWindows);
    SettingBinding::bind(m_ui->reloadChangedFiles, Settings::kReloadsChangedFiles);
    SettingBinding::bind(m_ui->renamesElsewhere, Settings::kRenamesElsewhere);
    SettingBinding::bind(m_ui->autosaveDelay, Settings::kAutosaveDelay);
    connect(m_ui->showOriginals, &QPushButton::clicked, this, &GeneralPane::showOriginals);
    connect(m_ui->resetColumns, &QPushButton::clicked, this, &GeneralPane::resetColumns);
}

GeneralPane::~GeneralPane() = default;

void GeneralPane::showOriginals()
{
    const QString folder = StandardFolders::userData() + "/Originals"_L1;
    QDir().mkpath(folder);
    QDesktopServices::openUrl(QUrl::fromLocalFile(folder));
}

void GeneralPane::resetColumns()
{
    // Windows that are opened later take what the last one has stored.
    for (Document *document : DocumentController::shared().documentList()) {
        if (auto *window = qobject_cast<VXWindowController *>(document->windowController()))
            window->tableView()->resetViewSettings();
    }
}

} // namespace runebook
