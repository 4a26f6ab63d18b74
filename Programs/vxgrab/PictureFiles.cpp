#include "vxgrab/PictureFiles.h"

#include "vxgrab/Picture.h"

#include <array>
#include <cstdio>

namespace vxgrab {

std::filesystem::path NumberedFile(const std::filesystem::path& file, std::uint64_t number)
{
    // Six digits keep the files in order for nine hours at 30 frames a second.
    std::array<wchar_t, 32> suffix{};
    std::swprintf(suffix.data(), suffix.size(), L"-%06llu", static_cast<unsigned long long>(number));
    std::filesystem::path numbered = file;
    numbered.replace_filename(file.stem().wstring() + suffix.data() + file.extension().wstring());
    return numbered;
}

VxResult PictureFiles::Write(const QueuedPicture& picture)
{
    const std::filesystem::path file =
        m_naming == Naming::Single ? m_file : NumberedFile(m_file, picture.number);
    VxResult result = WritePng(picture.format, picture.bytes, file);
    if (result.IsOK())
        m_written.push_back(file);
    return result;
}

} // namespace vxgrab
