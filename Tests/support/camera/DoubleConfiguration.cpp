// Configurations as texts of the form "double;device:NAME;stream:NAME;text:KEY=VALUE;...", with every
// character that would be in the way as %XX.

#include "VxDSSource/camera/VxConfigurationReader.h"
#include "VxDSSource/camera/VxConfigurationWriter.h"

#include "support/camera/CameraDouble.h"

#include <charconv>
#include <string>
#include <string_view>

namespace {

constexpr std::string_view kMark = "double";
constexpr std::string_view kTextEntry = "text:";

std::string Escaped(const std::string& text)
{
    std::string escaped;
    for (const char c : text) {
        if (std::string_view("%;=").find(c) == std::string_view::npos) {
            escaped += c;
            continue;
        }
        char code[4];
        std::snprintf(code, sizeof(code), "%%%02X", static_cast<unsigned char>(c));
        escaped += code;
    }
    return escaped;
}

std::string Unescaped(std::string_view text)
{
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%' || i + 2 >= text.size()) {
            plain += text[i];
            continue;
        }
        int code = 0;
        std::from_chars(text.data() + i + 1, text.data() + i + 3, code, 16);
        plain += static_cast<char>(code);
        i += 2;
    }
    return plain;
}

} // namespace

class VxConfigurationWriterImpl {
public:
    std::string text{kMark};
};

VxConfigurationWriter::VxConfigurationWriter() : m_impl(std::make_unique<VxConfigurationWriterImpl>()) {}
VxConfigurationWriter::~VxConfigurationWriter() = default;

VxResult VxConfigurationWriter::Store(VxDevice*, const VxString& name)
{
    TheCamera().log.Add(CallKind::Action, "writer.Store(device, \"" + name.Narrow() + "\")");
    m_impl->text += ";device:" + Escaped(name.Narrow());
    return VxResult::Ok();
}

VxResult VxConfigurationWriter::Store(VxStream*, const VxString& name)
{
    TheCamera().log.Add(CallKind::Action, "writer.Store(stream, \"" + name.Narrow() + "\")");
    m_impl->text += ";stream:" + Escaped(name.Narrow());
    return VxResult::Ok();
}

VxResult VxConfigurationWriter::Store(const VxString& value, const VxString& name)
{
    TheCamera().log.Add(CallKind::Query, "writer.Store(\"" + name.Narrow() + "\")");
    m_impl->text += ";text:" + Escaped(name.Narrow()) + "=" + Escaped(value.Narrow());
    return VxResult::Ok();
}

VxResult VxConfigurationWriter::SaveToString(VxString& text) const
{
    TheCamera().log.Add(CallKind::Query, "writer.SaveToString");
    text = m_impl->text;
    return VxResult::Ok();
}

class VxConfigurationReaderImpl {
public:
    std::vector<std::string> entries;

    [[nodiscard]] std::size_t Count(std::string_view kind) const
    {
        std::size_t count = 0;
        for (const std::string& entry : entries)
            count += entry.starts_with(kind) ? 1U : 0U;
        return count;
    }
};

VxConfigurationReader::VxConfigurationReader() : m_impl(std::make_unique<VxConfigurationReaderImpl>()) {}
VxConfigurationReader::~VxConfigurationReader() = default;

VxResult VxConfigurationReader::LoadFromString(const VxString& text)
{
    TheCamera().log.Add(CallKind::Query, "reader.LoadFromString");
    m_impl->entries.clear();
    const std::string_view all = text.Narrow();
    const std::size_t mark = all.find(';');
    if (all.substr(0, mark) != kMark)
        return VxError::InvalidData;
    for (std::size_t end = mark; end != std::string_view::npos;) {
        const std::size_t start = end + 1;
        end = all.find(';', start);
        m_impl->entries.emplace_back(all.substr(start, end - start));
    }
    return VxResult::Ok();
}

std::size_t VxConfigurationReader::GetDeviceCount() const
{
    TheCamera().log.Add(CallKind::Query, "reader.GetDeviceCount");
    return m_impl->Count("device:");
}

std::size_t VxConfigurationReader::GetStreamCount() const
{
    TheCamera().log.Add(CallKind::Query, "reader.GetStreamCount");
    return m_impl->Count("stream:");
}

VxResult VxConfigurationReader::Restore(std::size_t index, VxDevice*) const
{
    TheCamera().log.Add(CallKind::Action, "reader.Restore(" + std::to_string(index) + ", device)");
    TheCamera().restored.emplace_back("device");
    return VxResult::Ok();
}

VxResult VxConfigurationReader::Restore(std::size_t index, VxStream*) const
{
    TheCamera().log.Add(CallKind::Action, "reader.Restore(" + std::to_string(index) + ", stream)");
    TheCamera().restored.emplace_back("stream");
    return VxResult::Ok();
}

VxResult VxConfigurationReader::Restore(const VxString& name, VxString& value) const
{
    TheCamera().log.Add(CallKind::Query, "reader.Restore(\"" + name.Narrow() + "\")");
    const std::string wanted = std::string(kTextEntry) + Escaped(name.Narrow()) + "=";
    for (const std::string& entry : m_impl->entries) {
        if (entry.starts_with(wanted)) {
            value = Unescaped(std::string_view(entry).substr(wanted.size()));
            return VxResult::Ok();
        }
    }
    return VxError::NotFound;
}
