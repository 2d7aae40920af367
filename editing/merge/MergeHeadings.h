#pragma once

#include <QWidget>
#include <array>

namespace runebook {

/// What the sides of a merge are called: base, ours, theirs.
using MergeTitles = std::array<QString, 3>;

/// The names of the three sides above their columns: ours, base, theirs. A name that is too long for its
/// column loses its middle; a tool tip has it whole.
class MergeHeadings : public QWidget
{
    Q_OBJECT
public:
    explicit MergeHeadings(const MergeTitles &titles, QWidget *parent = nullptr);
};

} // namespace runebook
