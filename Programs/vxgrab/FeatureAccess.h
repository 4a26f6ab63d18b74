#pragma once

#include "vxgrab/ComPtr.h"
#include "vxgrab/Options.h"

#include "VxBase/VxExpected.h"
#include "VxDSSource/filter/IVxDSSource.h"

#include <string>

namespace vxgrab {

/// Reads and changes the features of a camera, of its link or of the stream receiver, by their names.
///
/// Owner:  the session, by value.
/// Thread: main thread.
class FeatureAccess final {
public:
    explicit FeatureAccess(ComPtr<IVxDSSource> filter) : m_filter(std::move(filter)) {}

    /// Chooses whose features are meant: 0 the link's, 1 the camera's, 2 the stream receiver's.
    /// @return  NOT_CONNECTED when they are not there now
    [[nodiscard]] VxResult Select(std::uint32_t array);

    /// Sets a feature from text; a command is executed, whatever the text.
    [[nodiscard]] VxResult Set(const FeatureAssignment& assignment);

    [[nodiscard]] VxExpected<std::string> Get(const std::string& name);

    /// @return  all features by category, one a line: name, type, access (r, w), value
    [[nodiscard]] VxExpected<std::string> DescribeAll();

private:
    [[nodiscard]] std::string TypeOf(const std::string& name);
    [[nodiscard]] std::string DescribeOne(const std::string& name);
    [[nodiscard]] VxResult Failure(const std::string& attempt, const std::string& name, HRESULT code,
                                   const std::string& reason) const;

    ComPtr<IVxDSSource> m_filter;
};

} // namespace vxgrab
