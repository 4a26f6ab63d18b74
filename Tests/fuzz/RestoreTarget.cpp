#include "fuzz/FuzzTarget.h"

#include "VxCamera/surface/FeatureStore.h"
#include "VxCamera/surface/NodeParameterArray.h"

#include "support/genapi/FakeRegisterPort.h"

namespace {

/// Features of each type, two behind a selector and one that limits another.
constexpr const char* kCamera = R"(<RegisterDescription SchemaMajorVersion="1" SchemaMinorVersion="1">
<Category Name="Root"><pFeature>Width</pFeature><pFeature>Offset</pFeature><pFeature>Gain</pFeature>
<pFeature>Mode</pFeature><pFeature>Name</pFeature><pFeature>Flip</pFeature><pFeature>Rate</pFeature>
<pFeature>Start</pFeature></Category>
<IntReg Name="Width"><Streamable>Yes</Streamable><Address>0</Address><Length>4</Length>
<AccessMode>RW</AccessMode></IntReg>
<Integer Name="Offset"><Streamable>Yes</Streamable><Value>0</Value><pMax>Width</pMax></Integer>
<Enumeration Name="Selector"><EnumEntry Name="Red"><Value>0</Value></EnumEntry>
<EnumEntry Name="Blue"><Value>1</Value></EnumEntry><Value>1</Value><pSelected>Gain</pSelected></Enumeration>
<Integer Name="Gain"><Streamable>Yes</Streamable><pIndex>Selector</pIndex>
<ValueIndexed Index="0">10</ValueIndexed><ValueDefault>20</ValueDefault></Integer>
<Enumeration Name="Mode"><Streamable>Yes</Streamable><EnumEntry Name="Off"><Value>0</Value></EnumEntry>
<EnumEntry Name="On"><Value>1</Value></EnumEntry><Value>0</Value></Enumeration>
<String Name="Name"><Streamable>Yes</Streamable><Value>camera</Value></String>
<Boolean Name="Flip"><Streamable>Yes</Streamable><Value>false</Value></Boolean>
<Float Name="Rate"><Streamable>Yes</Streamable><Value>1.5</Value></Float>
<Command Name="Start"><Value>0</Value><CommandValue>1</CommandValue></Command>
<Port Name="Device"/></RegisterDescription>)";

/// A saved configuration, written into a camera; what the camera holds then can be saved and restored.
void RestoreAndCollect(fuzz::Bytes bytes)
{
    const auto read = surface::ReadConfiguration(fuzz::TextOf(bytes));
    if (!read)
        return;
    FakeRegisterPort port;
    auto map = genapi::NodeMap::Load(kCamera, port);
    fuzz::Require(map.HasValue(), "the target's own camera is damaged");
    const VxSteadyClock clock;
    const auto array = NodeParameterArray::Create(*std::move(map));
    for (const surface::StoredFeatures& device : read->devices)
        static_cast<void>(surface::RestoreFeatures(*array, device.steps, clock));
    const auto collected = surface::CollectFeatures(*array, clock);
    fuzz::Require(surface::RestoreFeatures(*array, collected.steps, clock).IsOK(),
                  "what was saved is refused");
}

const fuzz::Registration kTarget("restore", RestoreAndCollect);

} // namespace
