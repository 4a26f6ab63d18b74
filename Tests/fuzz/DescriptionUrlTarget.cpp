#include "fuzz/FuzzTarget.h"

#include "VxCamera/control/DescriptionUrl.h"

namespace {

/// The text in which a camera says where its description is.
void ParseUrl(fuzz::Bytes bytes)
{
    const auto url = control::ParseDescriptionUrl(fuzz::TextOf(bytes));
    if (!url)
        fuzz::Require(!url.Error().GetDescription().IsEmpty(), "refused without a reason");
}

const fuzz::Registration kTarget("description-url", ParseUrl);

} // namespace
