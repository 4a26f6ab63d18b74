#include "VxDSSource/pages/ComString.h"

#include <new>

namespace pages {

ComString::ComString(const std::wstring& text)
    : m_text(::SysAllocStringLen(text.data(),
                                 static_cast<UINT>(text.size()))) // of a control, or a camera's name
{
    if (m_text == nullptr)
        throw std::bad_alloc();
}

BSTR* ComString::Put()
{
    ::SysFreeString(m_text);
    m_text = nullptr;
    return &m_text;
}

std::wstring ComString::Text() const
{
    return m_text != nullptr ? std::wstring(m_text, ::SysStringLen(m_text)) : std::wstring();
}

} // namespace pages
