#include "vxgrab/FeatureAccess.h"

#include "vxgrab/ComFailure.h"
#include "vxgrab/ComText.h"

#include <string_view>
#include <utility>
#include <vector>

namespace vxgrab {
namespace {

// Chosen: most names of the standard feature list fit, and a line stays on an 80-column screen.
constexpr std::size_t kNameColumns = 34;
constexpr std::size_t kTypeColumns = 9;
// Chosen: the beginning of a table says what it is; --get shows it whole.
constexpr std::size_t kValueColumns = 64;
// Fixed by the control interface: how every category path begins.
constexpr std::string_view kCategoryRoot = "root\\";

std::string Padded(std::string text, std::size_t columns)
{
    if (text.size() < columns)
        text.append(columns - text.size(), ' ');
    return text;
}

std::string Shortened(std::string value)
{
    if (value.size() <= kValueColumns)
        return value;
    const std::string length = std::to_string(value.size());
    std::size_t end = kValueColumns;
    while ((static_cast<unsigned char>(value[end]) & 0xC0) == 0x80) // inside a character of UTF-8
        --end;
    value.resize(end);
    return value.append("... (").append(length).append(" characters)");
}

std::string CategoryTitle(std::string path)
{
    if (path.starts_with(kCategoryRoot))
        path.erase(0, kCategoryRoot.size());
    return path.empty() ? "(no category)" : path;
}

/// Categories in the order in which the camera names them first.
using Category = std::pair<std::string, std::string>;

std::string& LinesOf(std::vector<Category>& categories, const std::string& name)
{
    for (Category& category : categories) {
        if (category.first == name)
            return category.second;
    }
    return categories.emplace_back(name, std::string()).second;
}

} // namespace

VxResult FeatureAccess::Select(std::uint32_t array)
{
    BOOL isAvailable = FALSE;
    HRESULT result = m_filter->SetParameterArray(array);
    if (SUCCEEDED(result))
        result = m_filter->IsParameterArrayAvailable(&isAvailable);
    if (FAILED(result))
        return ComFailure("reach the features", result);
    if (!isAvailable)
        return VxResult(VxError::NotConnected,
                        "these features need a camera that is connected: check --device-id");
    return VxResult::Ok();
}

VxResult FeatureAccess::Failure(const std::string& attempt, const std::string& name, HRESULT code,
                                const std::string& reason) const
{
    if (code == E_INVALIDARG)
        return VxResult(VxError::InvalidParameter,
                        "there is no feature '" + name + "': vxgrab --features shows them");
    if (!reason.empty())
        return VxResult(VxError::Failed, "cannot " + attempt + " feature '" + name + "': " + reason);
    return ComFailure(attempt + " feature '" + name + "'", code);
}

VxResult FeatureAccess::Set(const FeatureAssignment& assignment)
{
    const ComText name(assignment.name);
    ComText reason;
    if (TypeOf(assignment.name) == "Command") {
        const HRESULT result = m_filter->ExecuteCommand(name.Get(), reason.Put());
        return SUCCEEDED(result) ? VxResult::Ok()
                                 : Failure("execute", assignment.name, result, reason.Utf8());
    }
    const HRESULT result =
        m_filter->SetParameterValue(name.Get(), ComText(assignment.value).Get(), reason.Put());
    return SUCCEEDED(result) ? VxResult::Ok() : Failure("set", assignment.name, result, reason.Utf8());
}

VxExpected<std::string> FeatureAccess::Get(const std::string& name)
{
    ComText value;
    const HRESULT result = m_filter->GetParameterValue(ComText(name).Get(), value.Put());
    if (FAILED(result))
        return Failure("read", name, result, {});
    return value.Utf8();
}

std::string FeatureAccess::TypeOf(const std::string& name)
{
    ComText type;
    return SUCCEEDED(m_filter->GetParameterType(ComText(name).Get(), type.Put())) ? type.Utf8()
                                                                                  : std::string();
}

std::string FeatureAccess::DescribeOne(const std::string& name)
{
    BOOL isAvailable = FALSE;
    BOOL isReadable = FALSE;
    BOOL isWritable = FALSE;
    if (FAILED(m_filter->GetParameterAccess(ComText(name).Get(), &isAvailable, &isReadable, &isWritable)))
        isAvailable = isReadable = isWritable = FALSE;
    const std::string access = std::string(isReadable ? "r" : "-") + (isWritable ? "w" : "-");
    std::string line =
        "  " + Padded(name, kNameColumns) + " " + Padded(TypeOf(name), kTypeColumns) + access + "  ";
    if (!isAvailable)
        line += "(not available now)";
    else if (isReadable)
        line += Shortened(Get(name).ValueOr("(cannot be read)"));
    return line + "\n";
}

VxExpected<std::string> FeatureAccess::DescribeAll()
{
    UINT count = 0;
    HRESULT result = m_filter->GetParameterCount(&count);
    if (FAILED(result))
        return ComFailure("count the features", result);
    std::vector<Category> categories;
    for (UINT i = 0; i < count; ++i) {
        ComText name;
        ComText category;
        result = m_filter->GetParameterName(i, name.Put());
        if (SUCCEEDED(result))
            result = m_filter->GetParameterCategory(name.Get(), category.Put());
        if (FAILED(result))
            return ComFailure("read the list of features", result);
        LinesOf(categories, category.Utf8()) += DescribeOne(name.Utf8());
    }
    std::string text;
    for (const auto& [name, lines] : categories)
        text += CategoryTitle(name) + "\n" + lines;
    return text;
}

} // namespace vxgrab
