#pragma once

#include "editing/compare/CompareLists.h"

#include <array>

namespace runebook {

/// The two documents that the compare window sets side by side, each chosen among those that are open.
class ComparedDocuments : public QObject
{
    Q_OBJECT
public:
    enum Side { Left, Right };
    static constexpr Side kSides[] {Left, Right};
    static Side otherSide(Side side) { return side == Left ? Right : Left; }

    ComparedDocuments();

    DocumentChoice &choice(Side side) { return m_choices[side]; }
    /// Null when there is none, or when it was closed.
    VXDocument *document(Side side) const { return m_choices[side].document(); }
    /// Whether there are two, and not the same on both sides.
    bool areTwo() const;
    /// Whether commands may change that side.
    bool isWritable(Side side) const;

    /// Takes in the documents that are open now. Null leaves that side its choice, but shows no document on
    /// both sides where there is another one.
    void choose(VXDocument *left, VXDocument *right);
    /// Has a command of the window change \a target, of which changedByOthers() says nothing.
    void change(VXDocument &target, const std::function<void()> &command);
    /// What is still to be announced of edits is announced.
    void flush() const;

Q_SIGNALS:
    /// Other documents stand there, or the same ones again.
    void chosen();
    /// The list of one of them, or fields of its records.
    void changed();
    /// The same, unless it was a command of the window.
    void changedByOthers();
    void closed();

private:
    void tellChosen();
    void watch();
    void tellChanged();

    std::array<DocumentChoice, 2> m_choices;
    QList<QMetaObject::Connection> m_watches;
    bool m_isChoosing = false;
    bool m_isChanging = false;
};

} // namespace runebook
