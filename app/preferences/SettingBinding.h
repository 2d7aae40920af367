#pragma once

#include <QString>

class QCheckBox;
class QComboBox;
class QLineEdit;
class QSpinBox;

/// Ties controls to settings: each shows what the user's defaults hold, also when something else changes it,
/// and writes what the user enters, at once.
namespace runebook::SettingBinding {

/// An unset setting reads as no.
void bind(QCheckBox *box, const QString &key);
/// An unset setting reads as its registered fallback, else as \a fallback.
void bind(QSpinBox *box, const QString &key, int fallback);
/// By the number of the row; the first one stands for an unset setting.
void bind(QComboBox *box, const QString &key);
/// Written when the field is left; an empty one removes the setting.
void bind(QLineEdit *field, const QString &key);

} // namespace runebook::SettingBinding
