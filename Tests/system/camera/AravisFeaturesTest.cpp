#include "CameraLink.h"

#include "VxDSSource/camera/VxGenBoolean.h"
#include "VxDSSource/camera/VxGenEnum.h"
#include "VxDSSource/camera/VxGenFloat.h"
#include "VxDSSource/camera/VxGenInteger.h"
#include "VxDSSource/camera/VxGenParameter.h"
#include "VxDSSource/camera/VxGenParameterArray.h"
#include "VxSimulator/VxSimulatedCamera.h"

#include <gmock/gmock.h>

// The library of an independent client, which somebody else wrote.
#include <arv.h>

#include <array>
#include <charconv>
#include <cstdlib>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace {

constexpr const char* kNone = "-";

/// What a client says of a feature: values and limits as text, "-" where it gives none.
struct Seen {
    std::string value = kNone;
    std::string minimum = kNone;
    std::string maximum = kNone;

    [[nodiscard]] bool operator==(const Seen&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Seen& seen)
{
    return out << "\"" << seen.value << "\" from " << seen.minimum << " to " << seen.maximum;
}

using Features = std::map<std::string, Seen>;

template <typename Number>
std::string TextOf(Number number)
{
    std::array<char, 40> text{}; // more than any 64-bit number takes
    const auto end = std::to_chars(text.data(), text.data() + text.size(), number).ptr;
    return {text.data(), end};
}

template <typename Value, typename Feature>
void SeeNumber(const Feature& feature, Seen& seen)
{
    Value number{};
    if (feature.GetValue(number).IsOK())
        seen.value = TextOf(number);
    if (feature.GetMin(number).IsOK())
        seen.minimum = TextOf(number);
    if (feature.GetMax(number).IsOK())
        seen.maximum = TextOf(number);
}

Seen OursOf(const VxGenParameter& feature)
{
    Seen seen;
    if (const auto* const integer = dynamic_cast<const VxGenInteger*>(&feature); integer != nullptr) {
        SeeNumber<std::int64_t>(*integer, seen);
    } else if (const auto* const number = dynamic_cast<const VxGenFloat*>(&feature); number != nullptr) {
        SeeNumber<double>(*number, seen);
    } else if (VxString text; feature.ToString(text).IsOK()) {
        seen.value = text.Narrow();
    }
    if (!feature.IsAvailable())
        seen.value = kNone; // commands have a text all the same: none
    return seen;
}

/// Every feature of the camera at this address, as our library sees it.
Features Ours(const char* address)
{
    CameraLink link;
    link.Connect(address);
    Features features;
    for (std::size_t i = 0; i < link.Features().GetCount(); ++i) {
        const VxGenParameter& feature = *link.Features().Get(i);
        features[feature.GetName().Narrow()] = OursOf(feature);
    }
    return features;
}

/// Calls a function of the independent library.
/// @return  nothing when it reports an error
template <typename Function, typename Object>
auto Ask(Function function, Object* object) -> std::optional<decltype(function(object, nullptr))>
{
    GError* error = nullptr;
    auto value = function(object, &error);
    if (error == nullptr)
        return value;
    g_clear_error(&error);
    return std::nullopt;
}

template <typename Value>
std::string TextOrNone(const std::optional<Value>& value)
{
    return value ? TextOf(*value) : kNone;
}

/// Bytes in hexadecimal.
std::string BytesOf(ArvGcRegister* node)
{
    const auto length = Ask(arv_gc_register_get_length, node);
    if (!length || *length == 0)
        return kNone;
    std::vector<unsigned char> bytes(*length);
    GError* error = nullptr;
    arv_gc_register_get(node, bytes.data(), *length, &error);
    if (error != nullptr) {
        g_clear_error(&error);
        return kNone;
    }
    std::string text;
    for (const unsigned char byte : bytes)
        for (const int half : {byte >> 4, byte & 0xF})
            text += "0123456789abcdef"[half];
    return text;
}

/// That library reads the value also of what is not there; whether it is, has to be asked by itself.
bool IsThere(ArvGcNode* node)
{
    ArvGcFeatureNode* const feature = ARV_GC_FEATURE_NODE(node);
    return Ask(arv_gc_feature_node_is_implemented, feature).value_or(FALSE) != FALSE &&
           Ask(arv_gc_feature_node_is_available, feature).value_or(FALSE) != FALSE;
}

Seen TheirsOf(ArvGcNode* node)
{
    Seen seen;
    if (ARV_IS_GC_ENUMERATION(node)) {
        const auto name = Ask(arv_gc_enumeration_get_string_value, ARV_GC_ENUMERATION(node));
        seen.value = name && *name != nullptr ? *name : kNone;
    } else if (ARV_IS_GC_BOOLEAN(node)) {
        const auto value = Ask(arv_gc_boolean_get_value, ARV_GC_BOOLEAN(node));
        seen.value = !value ? kNone : *value != FALSE ? "true" : "false";
    } else if (ARV_IS_GC_COMMAND(node)) {
        seen.value = "";
    } else if (ARV_IS_GC_STRING(node)) {
        const auto text = Ask(arv_gc_string_get_value, ARV_GC_STRING(node));
        seen.value = text && *text != nullptr ? *text : kNone;
    } else if (ARV_IS_GC_FLOAT(node)) {
        seen = {TextOrNone(Ask(arv_gc_float_get_value, ARV_GC_FLOAT(node))),
                TextOrNone(Ask(arv_gc_float_get_min, ARV_GC_FLOAT(node))),
                TextOrNone(Ask(arv_gc_float_get_max, ARV_GC_FLOAT(node)))};
    } else if (ARV_IS_GC_INTEGER(node)) {
        seen = {TextOrNone(Ask(arv_gc_integer_get_value, ARV_GC_INTEGER(node))),
                TextOrNone(Ask(arv_gc_integer_get_min, ARV_GC_INTEGER(node))),
                TextOrNone(Ask(arv_gc_integer_get_max, ARV_GC_INTEGER(node)))};
    } else if (ARV_IS_GC_REGISTER(node)) {
        seen.value = BytesOf(ARV_GC_REGISTER(node));
    }
    if (!IsThere(node))
        seen.value = kNone;
    return seen;
}

void Walk(ArvGc* genicam, const char* name, std::set<std::string>& categories, Features& features)
{
    ArvGcNode* const node = arv_gc_get_node(genicam, name);
    if (!ARV_IS_GC_FEATURE_NODE(node))
        return; // a category may name what is not there
    if (!ARV_IS_GC_CATEGORY(node)) {
        features[name] = TheirsOf(node);
        return;
    }
    if (!categories.insert(name).second)
        return;
    for (const GSList* each = arv_gc_category_get_features(ARV_GC_CATEGORY(node)); each != nullptr;
         each = each->next)
        Walk(genicam, static_cast<const char*>(each->data), categories, features);
}

/// The same as the independent library sees it.
Features Theirs(const char* address)
{
    GError* error = nullptr;
    ArvCamera* camera = arv_camera_new(address, &error);
    if (camera == nullptr) {
        ADD_FAILURE() << error->message;
        return {};
    }
    Features features;
    std::set<std::string> categories;
    Walk(arv_device_get_genicam(arv_camera_get_device(camera)), "Root", categories, features);
    g_object_unref(camera);
    return features;
}

/// Features of the simulated camera whose values are not the same for the second one who reads them.
bool ChangesFromClientToClient(const std::string& name)
{
    return name == "DeviceTemperature" ||         // rises and falls
           name == "GevPrimaryApplicationSocket"; // the port of whoever controls the camera
}

/// A camera's whole tree before both clients, one after the other: that at VX_CAMERA, or a simulated one.
class AravisFeaturesTest : public testing::Test {
protected:
    void SetUp() override
    {
        if (const char* const address = std::getenv("VX_CAMERA"); address != nullptr) {
            m_address = address;
            return;
        }
        const VxResult started = m_camera.Start({});
        ASSERT_TRUE(started.IsOK()) << started.GetDescription().Narrow();
    }

    std::string m_address = "127.0.0.1";
    VxSimulatedCamera m_camera;
};

TEST_F(AravisFeaturesTest, EveryFeatureHasTheValueAndTheLimitsThatAnIndependentClientReads)
{
    const Features ours = Ours(m_address.c_str());
    const Features theirs = Theirs(m_address.c_str());

    ASSERT_GT(theirs.size(), 20u) << "they have not seen the camera";
    for (const auto& [name, seen] : theirs) {
        const auto found = ours.find(name);
        if (found == ours.end()) {
            ADD_FAILURE() << name << " is missing";
            continue;
        }
        Seen own = found->second;
        // That library knows no limits of formulas, nor of what refers to one.
        if (seen.minimum == kNone && seen.maximum == kNone)
            own.minimum = own.maximum = kNone;
        if (ChangesFromClientToClient(name))
            own.value = seen.value;
        EXPECT_EQ(own, seen) << name;
    }
    for (const auto& [name, seen] : ours)
        EXPECT_TRUE(theirs.contains(name)) << name << " is nothing that the camera describes";
}

} // namespace
