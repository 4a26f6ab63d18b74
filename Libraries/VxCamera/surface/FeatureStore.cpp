#include "VxCamera/surface/FeatureStore.h"

#include <mutex>
#include <string>
#include <utility>

#include "VxCamera/surface/FeatureCollector.h"
#include "VxCamera/surface/FeatureFailures.h"
#include "VxCamera/surface/FeatureRestorer.h"
#include "VxCamera/surface/NodeParameterArray.h"
#include "VxDSSource/camera/VxGenParameter.h"

namespace surface {

namespace {

/// Features without a description: nothing selects, and all that can be changed belongs to the state.
CollectedFeatures CollectList(const VxGenParameterArray& array)
{
    CollectedFeatures collected;
    FeatureFailures failures;
    for (std::size_t i = 0; i < array.GetCount(); ++i) {
        const VxGenParameter* const parameter = array.Get(i);
        VxGenType type = VxGenType::Unknown;
        if (parameter == nullptr || !parameter->GetType(type).IsOK() || type == VxGenType::Command)
            continue;
        if (!parameter->IsReadable() || !parameter->IsWritable())
            continue;
        failures.Count();
        VxString value;
        if (const VxResult read = parameter->ToString(value); !read.IsOK())
            failures.Note(parameter->GetName().Narrow(), read);
        else
            collected.steps.push_back(
                {ConfigurationStep::Kind::Feature, 0, parameter->GetName().Narrow(), value.Narrow()});
    }
    collected.result = failures.Summary("could not be read");
    return collected;
}

} // namespace

CollectedFeatures CollectFeatures(VxGenParameterArray& array, const IVxClock& clock)
{
    if (const auto* const nodes = dynamic_cast<const NodeParameterArray*>(&array); nodes != nullptr) {
        if (nodes->Map() == nullptr)
            return {};
        const auto lock = nodes->Map()->Hold(); // nobody may see selectors on their way
        return FeatureCollector(*nodes->Map(), clock).Collect();
    }
    return CollectList(array);
}

VxResult RestoreFeatures(VxGenParameterArray& array, const std::vector<ConfigurationStep>& steps,
                         const IVxClock& clock)
{
    const auto* const nodes = dynamic_cast<const NodeParameterArray*>(&array);
    genapi::NodeMap* const map = nodes != nullptr ? nodes->Map() : nullptr;
    std::unique_lock<std::recursive_mutex> lock;
    if (map != nullptr)
        lock = map->Hold();
    return FeatureRestorer(array, steps, clock).Restore();
}

} // namespace surface
