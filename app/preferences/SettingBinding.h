#pragma once

#include "platform/defaults/Setting.h"

class QCheckBox;
class QComboBox;
class QLineEdit;
class QSpinBox;

/// Ties controls to settings: each shows what the setting holds, also when something else changes it, and
/// writes what the user enters, at once.
namespace runebook::SettingBinding {

void bind(QCheckBox *box, const Setting<bool> &setting);
void bind(QSpinBox *box, const Setting<int> &setting);
/// By the number of the row; the first one stands for any other number.
void bind(QComboBox *box, const Setting<int> &setting);
/// Written when the field is left; an empty one removes the setting.
void bind(QLineEdit *field, const Setting<QString> &setting);

} // namespace runebook::SettingBinding
