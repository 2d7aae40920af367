#pragma once

#include <QMetaType>
#include <QString>
#include <QVariant>
#include <memory>

namespace runebook {

/// Turns the value of a field into what a control shows, and perhaps back. Stateless.
class ValueTransformer
{
    Q_GADGET
public:
    virtual ~ValueTransformer() = default;
    Q_INVOKABLE virtual QVariant transformedValue(const QVariant &value) const = 0;
    Q_INVOKABLE virtual QVariant reverseTransformedValue(const QVariant &value) const = 0;
    Q_INVOKABLE virtual bool allowsReverseTransformation() const = 0;

    /// Makes \a transformer known under \a name for the rest of the run; an earlier one goes.
    static void setForName(const QString &name, std::unique_ptr<ValueTransformer> transformer);
    /// The transformer of that name, or null.
    static const ValueTransformer *forName(const QString &name);
};

} // namespace runebook
