#pragma once

#include "editing/search/RecordFilter.h"

#include <vector>

namespace runebook {

/// One thing of a filter as it is shown in a row: a condition, what joins it with the next one, a
/// parenthesis.
struct FilterToken {
    enum class Kind : quint8 { Open, NotOpen, Close, Condition, Join, Everything, Nothing };

    Kind kind = Kind::Condition;
    /// Of a condition its number; of what joins, that of the condition in front of it. -1 where no condition
    /// stands on both sides.
    int number = -1;
    RecordFilter::Join join = RecordFilter::Join::All;
    friend bool operator==(const FilterToken &, const FilterToken &) = default;
};

// The conditions of a filter are numbered as they are shown, from 0 on, those in groups too.

std::vector<FilterToken> tokensOf(const RecordFilter &filter);
/// The condition with that number, which there has to be.
const FieldCondition &conditionAt(const RecordFilter &filter, int number);
void setConditionAt(RecordFilter &filter, int number, const FieldCondition &condition);
/// Groups that it leaves empty go with it.
void removeConditionAt(RecordFilter &filter, int number);
/// Joins the condition with that number and the next one the other way: with nothing else beside them their
/// group changes, else they become a group of their own.
void toggleJoinAfter(RecordFilter &filter, int number);

} // namespace runebook
