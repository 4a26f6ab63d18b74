#include "fuzz/FuzzTarget.h"

#include "VxCamera/surface/ConfigurationText.h"

namespace {

/// A saved configuration; whatever is accepted can be written and says the same then.
void ReadAndWrite(fuzz::Bytes bytes)
{
    const auto read = surface::ReadConfiguration(fuzz::TextOf(bytes));
    if (!read) {
        fuzz::Require(read.Error().Code() == VxError::InvalidData, "refused with another code");
        fuzz::Require(!read.Error().GetDescription().IsEmpty(), "refused without a reason");
        return;
    }
    const std::string text = surface::WriteConfiguration(*read);
    const auto again = surface::ReadConfiguration(text);
    fuzz::Require(again.HasValue(), "what was written is not read");
    fuzz::Require(surface::WriteConfiguration(*again) == text, "what was written reads as something else");
}

const fuzz::Registration kTarget("configuration", ReadAndWrite);

} // namespace
