#pragma once

#include <QProgressDialog>
#include <QString>
#include <memory>

namespace runebook {

/// Progress of work on the main thread that takes long: shows itself after a moment, and lets Esc stop the
/// work. Nothing is shown where nobody looks.
class LongWork
{
public:
    explicit LongWork(const QString &title, QWidget *parent = nullptr);
    /// Shows that \a part (0 to 1) is done; false when the user wants to stop.
    bool goOn(double part);

private:
    std::unique_ptr<QProgressDialog> m_dialog;
};

} // namespace runebook
