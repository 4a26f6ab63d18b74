#include "VxBase/VxResult.h"

#include <utility>

VxResult::VxResult(VxError code, VxString description) : m_code(code), m_description(std::move(description))
{
}

VxString VxResult::GetCodeString() const
{
    return VxErrorName(m_code);
}
