#include "tabbar/TabBarDelegate.h"

#include <QMenu>

namespace runebook {

namespace {

struct OperationForm {
    const char *signature;
    QMetaType result;
};

/// In the order of TabBarDelegate::Operation.
const std::array<OperationForm, 11> &operationForms()
{
    const QMetaType nothing = QMetaType::fromType<void>();
    const QMetaType answer = QMetaType::fromType<bool>();
    static const std::array<OperationForm, 11> forms {{
        {"tabBarShouldCloseTabItem(VXTabBarControl*,QObject*)", answer},
        {"tabBarWillCloseTabItem(VXTabBarControl*,QObject*)", nothing},
        {"tabBarDidCloseTabItem(VXTabBarControl*,QObject*)", nothing},
        {"tabBarWillUnselectTabItem(VXTabBarControl*,QObject*)", nothing},
        {"tabBarDidSelectTabItem(VXTabBarControl*,QObject*)", nothing},
        {"tabBarDisableTabCloseForTabItem(VXTabBarControl*,QObject*)", answer},
        {"tabBarToolTipForTabItem(VXTabBarControl*,QObject*)", QMetaType::fromType<QString>()},
        {"tabBarTabItemIsInOverflowMenu(VXTabBarControl*,QObject*,bool)", nothing},
        {"tabBarValidateOverflowMenuItemForTabItem(VXTabBarControl*,QAction*,QObject*)", answer},
        {"tabBarDidHide(VXTabBarControl*)", nothing},
        {"tabViewMenuForTabItem(VXTabBarControl*,QObject*)", QMetaType::fromType<QMenu *>()},
    }};
    return forms;
}

/// The method of \a type that has the form asked for; a near miss is a mistake worth a word.
QMetaMethod findOperation(const QMetaObject *type, const OperationForm &form)
{
    const QByteArray signature(form.signature);
    const QByteArray name = signature.left(signature.indexOf('('));
    QMetaMethod nearMiss;
    for (int index = type->methodCount() - 1; index >= 0; --index) {
        const QMetaMethod method = type->method(index);
        if (method.name() != name)
            continue;
        // A pointer may be declared where its class is only known by name, so names are compared as well.
        const bool sameResult = form.result.id() == QMetaType::Void || method.returnMetaType() == form.result
            || QByteArrayView(method.typeName()) == QByteArrayView(form.result.name());
        if (method.methodSignature() == signature && sameResult)
            return method;
        nearMiss = method;
    }
    if (nearMiss.isValid())
        qWarning("%s: the tab bar does not call %s, it expects %s %s", type->className(),
                 nearMiss.methodSignature().constData(), form.result.name(), form.signature);
    return {};
}

template <typename T> QGenericArgument typedArgument(const T &value)
{
    return QGenericArgument(QMetaType::fromType<T>().name(), &value);
}

} // namespace

void TabBarDelegate::setObject(QObject *delegate)
{
    m_object = delegate;
    static_assert(std::tuple_size_v<std::remove_cvref_t<decltype(operationForms())>> == OperationCount);
    for (size_t operation = 0; operation < OperationCount; ++operation)
        m_methods[operation] =
            delegate ? findOperation(delegate->metaObject(), operationForms()[operation]) : QMetaMethod();
}

template <typename Result, typename... Arguments>
Result TabBarDelegate::ask(Operation operation, Result otherwise, Arguments... arguments) const
{
    if (m_object && m_methods[operation].isValid())
        m_methods[operation].invoke(m_object, Qt::DirectConnection,
                                    QGenericReturnArgument(QMetaType::fromType<Result>().name(), &otherwise),
                                    m_bar, typedArgument(arguments)...);
    return otherwise;
}

template <typename... Arguments> void TabBarDelegate::tell(Operation operation, Arguments... arguments) const
{
    if (m_object && m_methods[operation].isValid())
        m_methods[operation].invoke(m_object, Qt::DirectConnection, m_bar, typedArgument(arguments)...);
}

bool TabBarDelegate::shouldClose(QObject *item) const
{
    return ask(ShouldClose, true, item);
}
void TabBarDelegate::willClose(QObject *item) const
{
    tell(WillClose, item);
}
void TabBarDelegate::didClose(QObject *item) const
{
    tell(DidClose, item);
}
void TabBarDelegate::willUnselect(QObject *item) const
{
    tell(WillUnselect, item);
}
void TabBarDelegate::didSelect(QObject *item) const
{
    tell(DidSelect, item);
}
bool TabBarDelegate::disablesClose(QObject *item) const
{
    return ask(DisableClose, false, item);
}
QString TabBarDelegate::toolTip(QObject *item) const
{
    return ask(ToolTip, QString(), item);
}
void TabBarDelegate::didHide() const
{
    tell(DidHide);
}

void TabBarDelegate::isInOverflowMenu(QObject *item, bool overflow) const
{
    tell(IsInOverflowMenu, item, overflow);
}

bool TabBarDelegate::validates(QAction *menuItem, QObject *item) const
{
    return ask(ValidateOverflowMenuItem, true, menuItem, item);
}

QMenu *TabBarDelegate::menu(QObject *item) const
{
    return ask(Menu, static_cast<QMenu *>(nullptr), item);
}

} // namespace runebook
