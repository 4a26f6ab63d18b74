#include "AravisPeer.h"

#include <arv.h>

#include <memory>

namespace {

struct Unref {
    void operator()(gpointer object) const { g_object_unref(object); }
};
template <typename Object>
using Owned = std::unique_ptr<Object, Unref>;

Owned<ArvDevice> MakeDevice(benchmark::State& state)
{
    Owned<ArvDevice> device(arv_fake_device_new("benchmark", nullptr));
    if (device == nullptr)
        state.SkipWithError("Aravis made no fake camera");
    return device;
}

} // namespace

void MeasureAravisLoad(benchmark::State& state, const std::string& xml)
{
    const auto device = MakeDevice(state);
    while (state.KeepRunning()) {
        const Owned<ArvGc> features(arv_gc_new(device.get(), xml.data(), xml.size()));
        if (features == nullptr || arv_gc_get_node(features.get(), "Root") == nullptr)
            state.SkipWithError("Aravis did not load the description");
    }
}

void MeasureAravisRead(benchmark::State& state, const std::string& xml, const char* feature)
{
    const auto device = MakeDevice(state);
    const Owned<ArvGc> features(arv_gc_new(device.get(), xml.data(), xml.size()));
    if (features == nullptr) {
        state.SkipWithError("Aravis did not load the description");
        return;
    }
    arv_gc_set_register_cache_policy(features.get(), ARV_REGISTER_CACHE_POLICY_ENABLE);
    ArvGcNode* const node = arv_gc_get_node(features.get(), feature);
    if (!ARV_IS_GC_INTEGER(node)) {
        state.SkipWithError("Aravis does not have the feature");
        return;
    }
    while (state.KeepRunning()) {
        GError* fault = nullptr;
        benchmark::DoNotOptimize(arv_gc_integer_get_value(ARV_GC_INTEGER(node), &fault));
        if (fault != nullptr) {
            state.SkipWithError(fault->message);
            g_clear_error(&fault);
        }
    }
}
