#include "scripting/bridge/ScriptHelpers.h"

#include "codeeditor/BraceMatching.h"
#include "model/StringHelpers.h"
#include "platform/FilePath.h"
#include "platform/PlainText.h"
#include "platform/Unattended.h"

#include <QApplication>
#include <QClipboard>
#include <QDesktopServices>
#include <QInputDialog>
#include <QMessageBox>
#include <QMimeData>
#include <QProgressDialog>
#include <QUrl>
#include <limits>

namespace runebook {

ScriptHelpers &ScriptHelpers::shared()
{
    static ScriptHelpers helpers;
    return helpers;
}

bool ScriptHelpers::canAsk() const
{
    return !isUnattended();
}

void ScriptHelpers::setCanAsk(bool canAsk)
{
    setUnattended(!canAsk);
}

void ScriptHelpers::showMessage(const QString &title, const QString &text)
{
    QMessageBox box(QApplication::activeWindow());
    setPlainTexts(box, title, text);
    box.exec();
}

QString ScriptHelpers::askText(const QString &prompt, const QString &text)
{
    QInputDialog dialog(QApplication::activeWindow());
    dialog.setInputMode(QInputDialog::TextInput);
    dialog.setLabelText(prompt.toHtmlEscaped());
    dialog.setTextValue(text);
    if (dialog.exec() != QDialog::Accepted)
        return {};
    const QString answer = dialog.textValue();
    return answer.isNull() ? QStringLiteral("") : answer;
}

bool ScriptHelpers::showProgress(const QString &title, int value, int maximum)
{
    if (!canAsk())
        return true;
    auto *dialog = qobject_cast<QProgressDialog *>(m_progress);
    if (!dialog) {
        dialog = new QProgressDialog(QApplication::activeWindow());
        dialog->setWindowModality(Qt::ApplicationModal);
        dialog->setLabelText(title.toHtmlEscaped());
        dialog->setAutoReset(false);
        m_progress = dialog;
    }
    dialog->setMaximum(maximum);
    dialog->setValue(value);
    const bool goesOn = !dialog->wasCanceled();
    if (value >= maximum || !goesOn) {
        m_progress = nullptr;
        delete dialog;
    }
    return goesOn;
}

void ScriptHelpers::processEvents()
{
    QCoreApplication::processEvents();
    // Without windows no event loop comes by to delete what was closed; a script that works through many
    // files must not keep them all.
    if (!canAsk())
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void ScriptHelpers::beep()
{
    QApplication::beep();
}

bool ScriptHelpers::openURL(const QString &url)
{
    const QUrl parsed(url);
    return QDesktopServices::openUrl(parsed.scheme().isEmpty() ? QUrl::fromLocalFile(url) : parsed);
}

QString ScriptHelpers::clipboardText() const
{
    return QGuiApplication::clipboard()->text();
}

bool ScriptHelpers::hasClipboardText() const
{
    const QMimeData *data = QGuiApplication::clipboard()->mimeData();
    return data && data->hasText();
}

void ScriptHelpers::setClipboardText(const QString &text)
{
    QGuiApplication::clipboard()->setText(text);
}

void ScriptHelpers::clearClipboard()
{
    QGuiApplication::clipboard()->clear();
}

quint32 ScriptHelpers::hexStringToInt(const QString &text) const
{
    return runebook::hexStringToInt(text);
}

QString ScriptHelpers::hexStringFromInt(qint64 number) const
{
    return runebook::hexStringFromInt(number);
}

QString ScriptHelpers::stringWithChar(quint32 codePoint) const
{
    return runebook::stringWithChar(codePoint);
}

QVariantList ScriptHelpers::character32AtIndex(const QString &text, qint64 index) const
{
    if (index < 0 || index >= text.size())
        throw std::out_of_range("no character stands at that place");
    qsizetype place = index;
    const char32_t character = runebook::character32AtIndex(text, place);
    return {static_cast<qint64>(character), static_cast<qint64>(place)};
}

QVariantList ScriptHelpers::rangeOfLine(const QString &text, int number) const
{
    const UnitRange range = runebook::rangeOfLine(text, number);
    return {static_cast<qint64>(range.location), static_cast<qint64>(range.length)};
}

QString ScriptHelpers::UUID() const
{
    return runebook::UUID();
}

void ScriptHelpers::initBraces() const
{
    ::initBraces();
}

bool ScriptHelpers::TE_isOpeningBrace(quint16 character) const
{
    return ::TE_isOpeningBrace(character);
}

bool ScriptHelpers::TE_isClosingBrace(quint16 character) const
{
    return ::TE_isClosingBrace(character);
}

QVariant ScriptHelpers::TE_findMatchingBraceForRangeInString(int index, const QString &text) const
{
    const auto found = ::TE_findMatchingBraceForRangeInString(index, text);
    return found ? QVariant::fromValue(*found) : QVariant();
}

} // namespace runebook
