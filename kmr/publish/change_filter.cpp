#include "kmr/publish/change_filter.h"

#include <cmath>
#include <utility>

namespace kmr {

namespace {

// 0.3 - 0.2 is a little less than 0.1.
constexpr double ROUNDING = 1e-9;

bool isText(const Value &value)
{
    return std::holds_alternative<QString>(value);
}

bool isFar(const Value &left, const Value &right, double deadband)
{
    if (isText(left) || isText(right))
        return left != right;
    const double distance = std::abs(toText(left).toDouble() - toText(right).toDouble());
    return distance >= deadband * (1 - ROUNDING);
}

} // namespace

bool ChangeFilter::isNews(const Tag &tag, const Sample &sample, Time now) const
{
    const bool isDue = m_heartbeat.count() > 0 && now - m_time >= m_heartbeat;
    return !m_hasPublished || isDue || sample.quality != m_published.quality ||
           sample.cause != m_published.cause || isOtherValue(tag, sample.values);
}

bool ChangeFilter::isOtherValue(const Tag &tag, const Values &values) const
{
    if (values == m_published.values)
        return false;
    if (m_deadband <= 0 || values.size() != m_published.values.size())
        return true;
    const std::vector<Value> shown = interpret(tag, values);
    const std::vector<Value> published = interpret(tag, m_published.values);
    for (std::size_t i = 0; i < shown.size(); ++i) {
        if (isFar(shown[i], published[i], m_deadband))
            return true;
    }
    return false;
}

void ChangeFilter::notePublished(Sample sample, Time now)
{
    m_hasPublished = true;
    m_published = std::move(sample);
    m_time = now;
}

} // namespace kmr
