#include "VxDSSource/pages/FeatureRefresher.h"

#include "BaseClasses/AtComEdge.h"
#include "VxBase/VxRunningThread.h"
#include "VxDSSource/pages/ComString.h"

#include <system_error>
#include <tuple>
#include <utility>

namespace pages {

namespace {

// Fixed: how often the values are read at most, and how long a stop takes when nothing is under way.
constexpr ULONGLONG kPassMs = 1000;
constexpr DWORD kStepMs = 50;

constexpr wchar_t kNotAvailable[] = L"{Not Available}";
constexpr wchar_t kNotReadable[] = L"{Not Readable}";
constexpr wchar_t kCommand[] = L"{Command}";

} // namespace

FeatureAccess ReadAccess(IVxDSSource& source, const std::wstring& feature)
{
    BOOL isAvailable = FALSE;
    BOOL isReadable = FALSE;
    BOOL isWritable = FALSE;
    source.GetParameterAccess(ComString(feature).Get(), &isAvailable, &isReadable, &isWritable);
    return {isAvailable != FALSE, isReadable != FALSE, isWritable != FALSE};
}

std::wstring ReadValue(IVxDSSource& source, const std::wstring& feature)
{
    ComString value;
    source.GetParameterValue(ComString(feature).Get(), value.Put());
    return value.Text();
}

void FeatureRefresher::Clear()
{
    m_rows.clear();
}

void FeatureRefresher::Add(HTREEITEM leaf, FeatureEntry feature)
{
    m_rows[leaf].feature = std::move(feature);
}

void FeatureRefresher::Start(VxComPtr<IVxDSSource> source, HWND page)
{
    m_isStopping = false;
    try {
        m_thread = std::thread([this, source = std::move(source), page] {
            const VxRunningThread counted;
            Run(*source.Get(), page);
        });
    } catch (const std::system_error&) {
        // The system starts no further thread; the next choice of another set tries again.
    }
}

void FeatureRefresher::Stop()
{
    m_isStopping = true;
    if (m_thread.joinable())
        m_thread.join();
}

const FeatureEntry* FeatureRefresher::Find(HTREEITEM leaf) const
{
    const auto found = m_rows.find(leaf);
    return found != m_rows.end() ? &found->second.feature : nullptr;
}

std::optional<std::wstring> FeatureRefresher::LeafText(HTREEITEM leaf)
{
    const auto found = m_rows.find(leaf);
    if (found == m_rows.end())
        return std::nullopt;
    const Row& row = found->second;
    const VxLock lock(m_mutex);
    return row.feature.name + L": " + row.value;
}

void FeatureRefresher::Run(IVxDSSource& source, HWND page)
{
    while (!m_isStopping) {
        const ULONGLONG passStart = ::GetTickCount64();
        for (auto& leafAndRow : m_rows) {
            // What cannot be read for want of memory is read again in the next pass.
            std::ignore = AtComEdge([&] {
                Refresh(source, leafAndRow.second);
                ::PostMessageW(page, kRefreshMessage, 0, reinterpret_cast<LPARAM>(leafAndRow.first));
                return S_OK;
            });
            if (m_isStopping)
                return;
        }
        WaitForNextPass(passStart);
    }
}

void FeatureRefresher::Refresh(IVxDSSource& source, Row& row)
{
    const FeatureAccess access = ReadAccess(source, row.feature.name);
    std::wstring value;
    if (access.isReadable)
        value = ReadValue(source, row.feature.name);
    if (!access.isAvailable)
        value = kNotAvailable;
    else if (!access.isReadable)
        value = kNotReadable;
    if (access.isWritable && row.feature.IsCommand())
        value = kCommand;

    const VxLock lock(m_mutex);
    row.value = std::move(value);
}

void FeatureRefresher::WaitForNextPass(ULONGLONG passStart) const
{
    while (!m_isStopping && ::GetTickCount64() - passStart < kPassMs)
        ::Sleep(kStepMs);
}

} // namespace pages
