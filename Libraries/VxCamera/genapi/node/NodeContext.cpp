#include "VxCamera/genapi/node/NodeContext.h"

namespace genapi {

namespace {

// Chosen: real descriptions stay below 20 levels and some thousand steps. The budget is a fraction of a
// second.
constexpr int kMaxDepth = 100;
constexpr std::size_t kBudgetSteps = 2'000'000;

} // namespace

void NodeContext::BeginOperation()
{
    m_budget = kBudgetSteps;
    ++m_epoch;
    m_lock = {};
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
