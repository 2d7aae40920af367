#include "app/preferences/SettingBinding.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QSignalBlocker>
#include <QSpinBox>

namespace runebook::SettingBinding {

namespace {

/// Calls \a show now and whenever the setting changes, without the control telling it back.
template <typename Control, typename T, typename Show>
void follow(Control *control, const Setting<T> &setting, Show show)
{
    const auto refresh = [control, setting, show] {
        const QSignalBlocker quiet(control);
        show(setting.value());
    };
    setting.onChange(control, refresh);
    refresh();
}

} // namespace

void bind(QCheckBox *box, const Setting<bool> &setting)
{
    follow(box, setting, [box](bool isOn) { box->setChecked(isOn); });
    QObject::connect(box, &QCheckBox::toggled, box, [setting](bool isOn) { setting.set(isOn); });
}

void bind(QSpinBox *box, const Setting<int> &setting)
{
    follow(box, setting, [box](int value) { box->setValue(value); });
    QObject::connect(box, &QSpinBox::valueChanged, box, [setting](int value) { setting.set(value); });
}

void bind(QComboBox *box, const Setting<int> &setting)
{
    follow(box, setting, [box](int row) { box->setCurrentIndex(row >= 0 && row < box->count() ? row : 0); });
    QObject::connect(box, &QComboBox::currentIndexChanged, box, [setting](int row) { setting.set(row); });
}

void bind(QLineEdit *field, const Setting<QString> &setting)
{
    follow(field, setting, [field](const QString &text) { field->setText(text); });
    QObject::connect(field, &QLineEdit::editingFinished, field,
                     [field, setting] { setting.setOrReset(field->text().trimmed()); });
}

} // namespace runebook::SettingBinding
