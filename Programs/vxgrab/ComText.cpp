#include "vxgrab/ComText.h"

#include "VxBase/VxString.h"

namespace vxgrab {

ComText::ComText(std::string_view utf8)
{
    const std::wstring wide = VxWideFromUtf8(utf8);
    m_text = ::SysAllocStringLen(wide.data(), static_cast<UINT>(wide.size())); // command-line texts are short
}

ComText::~ComText()
{
    ::SysFreeString(m_text);
}

BSTR* ComText::Put()
{
    ::SysFreeString(m_text);
    m_text = nullptr;
    return &m_text;
}

std::string ComText::Utf8() const
{
    return m_text != nullptr ? VxUtf8FromWide({m_text, ::SysStringLen(m_text)}) : std::string();
}

} // namespace vxgrab
