#pragma once

#include <QColor>
#include <QList>
#include <QSet>
#include <QWidget>

class QLabel;

namespace runebook {

/// A row of titled cells, one for each choice that a field has; those are lit that the records have.
class ChoiceCells : public QWidget
{
    Q_OBJECT
public:
    struct Choice {
        int value;
        QString title;
    };
    /// \a title names the field for assistive technology.
    ChoiceCells(const QString &title, const QList<Choice> &choices, QWidget *parent = nullptr);

    Q_INVOKABLE QStringList titles() const;
    /// The cells, one label for each choice.
    Q_INVOKABLE QList<QObject *> cells() const;
    Q_INVOKABLE QColor titleColor() const;
    /// Gives every cell its title in this colour and in the font of the first.
    void setTitleColor(const QColor &color);
    QSet<int> chosen() const { return m_chosen; }
    void setChosen(const QSet<int> &values);

private:
    QString m_title;
    QList<Choice> m_choices;
    QList<QLabel *> m_cells;
    QSet<int> m_chosen;
};

} // namespace runebook
