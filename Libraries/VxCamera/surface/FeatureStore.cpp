#include "VxCamera/surface/FeatureStore.h"

#include <mutex>
#include <string>
#include <utility>

#include "VxCamera/surface/FeatureCollector.h"
#include "VxCamera/surface/FeatureRestorer.h"
#include "VxCamera/surface/NodeParameterArray.h"
#include "VxDSSource/camera/VxGenParameter.h"

namespace surface {

std::vector<ConfigurationStep> CollectFeatures(VxGenParameterArray& array)
{
    if (const auto* const nodes = dynamic_cast<const NodeParameterArray*>(&array); nodes != nullptr) {
        if (nodes->Map() == nullptr)
            return {};
        const auto lock = nodes->Map()->Hold(); // nobody may see selectors on their way
        return FeatureCollector(*nodes->Map()).Collect();
    }
    std::vector<ConfigurationStep> steps;
    for (std::size_t i = 0; i < array.GetCount(); ++i) {
        const VxGenParameter* const parameter = array.Get(i);
        VxGenType type = VxGenType::Unknown;
        VxString value;
        if (parameter == nullptr || !parameter->GetType(type).IsOK() || type == VxGenType::Command)
            continue;
        if (parameter->IsReadable() && parameter->IsWritable() && parameter->ToString(value).IsOK())
            steps.push_back(
                {ConfigurationStep::Kind::Feature, 0, parameter->GetName().Narrow(), value.Narrow()});
    }
    return steps;
}

VxResult RestoreFeatures(VxGenParameterArray& array, const std::vector<ConfigurationStep>& steps)
{
    const auto* const nodes = dynamic_cast<const NodeParameterArray*>(&array);
    genapi::NodeMap* const map = nodes != nullptr ? nodes->Map() : nullptr;
    std::unique_lock<std::recursive_mutex> lock;
    if (map != nullptr)
        lock = map->Hold();
    return FeatureRestorer(array, steps).Restore();
}

} // namespace surface
