#include "editing/window/CommonValues.h"

#include <QDeadlineTimer>
#include <algorithm>

namespace runebook {

namespace {

constexpr std::size_t kLookedAtOnce = 2000;

} // namespace

CommonValues::CommonValues(QObject *parent) : QObject(parent)
{
    m_timer.setInterval(0);
    connect(&m_timer, &QTimer::timeout, this, &CommonValues::compareMore);
}

void CommonValues::setInfos(InfoList infos)
{
    m_infos = std::move(infos);
    m_open.clear();
}

CommonValue CommonValues::valueOf(GlyphField field)
{
    std::erase_if(m_open, [field](const Progress &progress) { return progress.field == field; });
    const std::size_t first = std::min(m_infos.size(), kLookedAtOnce);
    CommonValue value = commonValue(std::span(m_infos).first(first), field);
    if (!value.isMixed && first < m_infos.size()) {
        m_open.push_back({field, first});
        m_timer.start();
    }
    return value;
}

void CommonValues::compareMore()
{
    constexpr int kSliceMs = 6;
    const QDeadlineTimer deadline(kSliceMs);
    while (!m_open.empty() && !deadline.hasExpired()) {
        const GlyphField field = m_open.front().field;
        const bool isCommon = advance(m_open.front());
        if (isCommon && m_open.front().next < m_infos.size())
            continue;
        m_open.erase(m_open.begin());
        if (!isCommon)
            Q_EMIT foundMixed(field);
    }
    if (m_open.empty())
        m_timer.stop();
}

/// Compares some more records; false when one has another value.
bool CommonValues::advance(Progress &progress)
{
    for (const std::size_t end = std::min(m_infos.size(), progress.next + kLookedAtOnce); progress.next < end;
         ++progress.next) {
        if (!lookAlike(*m_infos.front(), *m_infos[progress.next], progress.field))
            return false;
    }
    return true;
}

} // namespace runebook
