#include "app/preferences/SettingBinding.h"

#include "platform/defaults/UserDefaults.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QSignalBlocker>
#include <QSpinBox>

namespace runebook::SettingBinding {

namespace {

/// Calls \a show now and whenever the setting changes, without the control telling it back.
template <typename Control, typename Show> void follow(Control *control, const QString &key, Show show)
{
    const auto refresh = [control, show] {
        const QSignalBlocker quiet(control);
        show();
    };
    QObject::connect(&UserDefaults::standard(), &UserDefaults::changed, control,
                     [key, refresh](const QString &changed) {
                         if (changed == key)
                             refresh();
                     });
    refresh();
}

} // namespace

void bind(QCheckBox *box, const QString &key)
{
    follow(box, key, [box, key] { box->setChecked(UserDefaults::standard().boolForKey(key)); });
    QObject::connect(box, &QCheckBox::toggled, box,
                     [key](bool isOn) { UserDefaults::standard().setObjectForKey(isOn, key); });
}

void bind(QSpinBox *box, const QString &key, int fallback)
{
    follow(box, key, [box, key, fallback] {
        const QVariant value = UserDefaults::standard().objectForKey(key);
        box->setValue(value.isValid() ? value.toInt() : fallback);
    });
    QObject::connect(box, &QSpinBox::valueChanged, box,
                     [key](int value) { UserDefaults::standard().setObjectForKey(value, key); });
}

void bind(QComboBox *box, const QString &key)
{
    follow(box, key, [box, key] {
        const int row = UserDefaults::standard().integerForKey(key);
        box->setCurrentIndex(row >= 0 && row < box->count() ? row : 0);
    });
    QObject::connect(box, &QComboBox::currentIndexChanged, box,
                     [key](int row) { UserDefaults::standard().setObjectForKey(row, key); });
}

void bind(QLineEdit *field, const QString &key)
{
    follow(field, key, [field, key] { field->setText(UserDefaults::standard().stringForKey(key)); });
    QObject::connect(field, &QLineEdit::editingFinished, field, [field, key] {
        const QString text = field->text().trimmed();
        UserDefaults::standard().setObjectForKey(text.isEmpty() ? QVariant() : QVariant(text), key);
    });
}

} // namespace runebook::SettingBinding
