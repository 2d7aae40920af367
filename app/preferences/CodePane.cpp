#include "app/preferences/CodePane.h"

#include "app/preferences/SettingBinding.h"
#include "scripting/panel/PanelSettings.h"
#include "scripting/panel/VXMacroViewController.h"
#include "ui_CodePane.h"

#include <QFontDatabase>

namespace runebook {

using namespace Qt::StringLiterals;

CodePane::CodePane(QWidget *parent) : QWidget(parent), m_ui(std::make_unique<Ui::CodePane>())
{
    m_ui->setupUi(this);
    VXMacroViewController::initialize(); // knows what holds while nothing is set
    m_ui->consoleLines->setGroupSeparatorShown(true);
    SettingBinding::bind(m_ui->fontSize, Settings::kMacroFontSize);
    SettingBinding::bind(m_ui->consoleLines, Settings::kConsoleLineLimit);
    SettingBinding::bind(m_ui->wrapColumn, Settings::kWrapColumn);
    SettingBinding::bind(m_ui->indentation, Settings::kIndentation);
    SettingBinding::bind(m_ui->closesBrackets, Settings::kClosesBrackets);
    connect(m_ui->fontSize, &QSpinBox::valueChanged, this, &CodePane::showSample);
    showSample();
}

CodePane::~CodePane() = default;

void CodePane::showSample()
{
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    for (const QString &family : {u"Menlo"_s, u"Monaco"_s}) {
        if (QFontDatabase::hasFamily(family)) {
            font.setFamily(family);
            break;
        }
    }
    font.setPointSize(m_ui->fontSize->value());
    m_ui->sample->setFont(font);
}

} // namespace runebook
