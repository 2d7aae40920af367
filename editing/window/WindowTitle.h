#pragma once

#include "editing/window/WindowParts.h"

#include <QObject>

class QLabel;
class QStatusBar;

namespace runebook {

/// What a document window says of itself: its title, and in the status bar how many records it shows and how
/// many of them are selected.
class WindowTitle : public QObject
{
    Q_OBJECT
public:
    WindowTitle(const WindowParts &parts, QObject *parent);
    /// The labels of the status bar, which owns them then.
    void addTo(QStatusBar &bar);

    QString title() const { return m_title; }
    QString subtitle() const { return m_subtitle; }
    /// Returns the name unchanged; sets the subtitle on the way.
    QString titleForDisplayName(const QString &displayName);
    void synchronize();
    void showSelectedCount();
    /// \a done of a search, from 0 to 1, in the place of the subtitle.
    void showProgress(double done);
    void showSubtitle();

Q_SIGNALS:
    void subtitleChanged();

private:
    QString countText(const QString &shown, const QString &total) const;

    WindowParts m_parts;
    QLabel *m_subtitleLabel;
    QLabel *m_countLabel;
    QString m_title;
    QString m_subtitle;
};

} // namespace runebook
