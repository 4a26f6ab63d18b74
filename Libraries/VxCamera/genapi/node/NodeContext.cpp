#include "VxCamera/genapi/node/NodeContext.h"

#include <chrono>
#include <string>

namespace genapi {

namespace {

// Chosen: real descriptions stay below 20 levels and some thousand steps. The budget is a fraction of a
// second.
constexpr int kMaxDepth = 100;
constexpr std::size_t kBudgetSteps = 2'000'000;

// Chosen: far above the longest feature of a slow camera, which needs some hundred accesses of a few
// milliseconds; and short enough for others who wait for the map. The access in which it passes is not broken
// off: the port bounds that one by a time of its own, however large the register is.
constexpr std::chrono::seconds kLongestOperation{10};

} // namespace

void NodeContext::BeginOperation()
{
    m_budget = kBudgetSteps;
    ++m_epoch;
    m_lock = {};
    m_awaited = {};
    m_isLate = false;
    if (m_clock != nullptr)
        m_deadline = m_clock->Now() + kLongestOperation;
}

VxResult NodeContext::CheckDeadline()
{
    m_isLate = m_isLate || (m_deadline && m_clock->Now() > *m_deadline);
    if (!m_isLate)
        return VxResult::Ok();
    return VxResult(VxError::Timeout, "the camera was asked for it for more than " +
                                          std::to_string(kLongestOperation.count()) +
                                          " s: its description needs too many accesses, or the camera "
                                          "answers too slowly");
}

bool NodeContext::Enter()
{
    ++m_depth;
    Spend(1);
    return m_depth <= kMaxDepth && m_budget > 0;
}

void NodeContext::Spend(std::size_t steps)
{
    m_budget -= steps < m_budget ? steps : m_budget;
}

} // namespace genapi
