#pragma once

#include "VxDSSource/camera/VxGenBoolean.h"
#include "VxDSSource/camera/VxGenCommand.h"
#include "VxDSSource/camera/VxGenEnum.h"
#include "VxDSSource/camera/VxGenFloat.h"
#include "VxDSSource/camera/VxGenInteger.h"
#include "VxDSSource/camera/VxGenParameterArray.h"
#include "VxDSSource/camera/VxGenRegister.h"
#include "VxDSSource/camera/VxGenString.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

/// What every scripted feature answers; the test changes it as it likes.
struct FeatureAnswers {
    std::string owner; ///< "device", "communication", "stream"
    std::string name;
    std::string category = "Root";
    VxGenVisibility visibility = VxGenVisibility::Beginner;
    bool isAvailable = true;
    bool isReadable = true;
    bool isWritable = true;
    VxResult reading = VxResult::Ok(); ///< of every read of the value
    VxResult writing = VxResult::Ok(); ///< of every write and execution
    VxResult tellingType = VxResult::Ok();
    std::function<void()> onWrite; ///< called before a write is answered

    /// Logs the question "owner.Name.what".
    void NoteRead(const char* what) const;
};

/// A feature with a value of one type.
///
/// Owner:  ScriptedFeatures.
/// Thread: one at a time.
template <typename Base, VxGenType kType>
class ScriptedFeature : public Base, public FeatureAnswers {
public:
    [[nodiscard]] VxString GetName() const override { return name; }
    [[nodiscard]] VxString GetCategory() const override
    {
        NoteRead("GetCategory");
        return category;
    }
    VxResult GetType(VxGenType& type) const override
    {
        NoteRead("GetType");
        if (tellingType.IsOK())
            type = kType;
        return tellingType;
    }
    VxResult GetVisibility(VxGenVisibility& level) const override
    {
        NoteRead("GetVisibility");
        level = visibility;
        return VxResult::Ok();
    }
    [[nodiscard]] bool IsAvailable() const override
    {
        NoteRead("IsAvailable");
        return isAvailable;
    }
    [[nodiscard]] bool IsReadable() const override
    {
        NoteRead("IsReadable");
        return isReadable;
    }
    [[nodiscard]] bool IsWritable() const override
    {
        NoteRead("IsWritable");
        return isWritable;
    }

protected:
    /// Logs "owner.Name.what" and hands out where reading is OK.
    template <typename Value>
    VxResult Read(const char* what, const Value& from, Value& to) const
    {
        NoteRead(what);
        if (reading.IsOK())
            to = from;
        return reading;
    }

    /// Logs "owner.Name = text" and stores where writing is OK.
    template <typename Value>
    VxResult Write(const Value& from, Value& to, const std::string& text);
};

class ScriptedInteger final : public ScriptedFeature<VxGenInteger, VxGenType::Integer> {
public:
    std::int64_t value = 0;

    VxResult GetValue(std::int64_t& to) const override { return Read("GetValue", value, to); }
    VxResult SetValue(std::int64_t from) override;
    VxResult GetMin(std::int64_t& to) const override { return Read("GetMin", std::int64_t{0}, to); }
    VxResult GetMax(std::int64_t& to) const override { return Read("GetMax", std::int64_t{1} << 32, to); }
    VxResult GetIncrement(std::int64_t& to) const override
    {
        return Read("GetIncrement", std::int64_t{1}, to);
    }
    VxResult ToString(VxString& text) const override
    {
        return Read("ToString", VxString(std::to_string(value)), text);
    }
    VxResult FromString(const VxString& text) override;
};

class ScriptedFloat final : public ScriptedFeature<VxGenFloat, VxGenType::Float> {
public:
    double value = 0;

    VxResult GetValue(double& to) const override { return Read("GetValue", value, to); }
    VxResult SetValue(double from) override;
    VxResult GetMin(double& to) const override { return Read("GetMin", 0.0, to); }
    VxResult GetMax(double& to) const override { return Read("GetMax", 1e9, to); }
    VxResult ToString(VxString& text) const override
    {
        return Read("ToString", VxString(std::to_string(value)), text);
    }
    VxResult FromString(const VxString& text) override { return SetValue(std::stod(text.Narrow())); }
};

class ScriptedBoolean final : public ScriptedFeature<VxGenBoolean, VxGenType::Boolean> {
public:
    bool value = false;

    VxResult GetValue(bool& to) const override { return Read("GetValue", value, to); }
    VxResult SetValue(bool from) override;
    VxResult ToString(VxString& text) const override
    {
        return Read("ToString", VxString(value ? "true" : "false"), text);
    }
    VxResult FromString(const VxString& text) override { return SetValue(text == "true"); }
};

class ScriptedString final : public ScriptedFeature<VxGenString, VxGenType::String> {
public:
    VxString value;

    VxResult GetValue(VxString& to) const override { return Read("GetValue", value, to); }
    VxResult SetValue(const VxString& from) override;
    VxResult ToString(VxString& text) const override { return Read("ToString", value, text); }
    VxResult FromString(const VxString& text) override { return SetValue(text); }
};

class ScriptedRegister final : public ScriptedFeature<VxGenRegister, VxGenType::Register> {
public:
    std::vector<std::byte> value;

    VxResult GetValue(std::vector<std::byte>& to) const override { return Read("GetValue", value, to); }
    VxResult SetValue(std::span<const std::byte> from) override;
    VxResult ToString(VxString& text) const override { return Read("ToString", VxString("bytes"), text); }
    VxResult FromString(const VxString&) override { return VxError::NotSupported; }
};

class ScriptedCommand final : public ScriptedFeature<VxGenCommand, VxGenType::Command> {
public:
    VxResult Execute() override;
    VxResult IsDone(bool& isDone) const override { return Read("IsDone", true, isDone); }
    VxResult ToString(VxString& text) const override { return Read("ToString", VxString(), text); }
    VxResult FromString(const VxString&) override { return Execute(); }
};

class ScriptedEnumEntry final : public VxGenEnumEntry {
public:
    explicit ScriptedEnumEntry(std::string name) : m_name(std::move(name)) {}
    VxResult GetName(VxString& name) const override; ///< logs "entry NAME.GetName"
    VxResult GetValue(std::int64_t&) const override { return VxError::NotSupported; }
    [[nodiscard]] bool IsAvailable() const override { return true; }
    [[nodiscard]] const std::string& Name() const { return m_name; }

private:
    std::string m_name;
};

class ScriptedEnum final : public ScriptedFeature<VxGenEnum, VxGenType::Enum> {
public:
    std::vector<std::string> entries;
    VxString value;

    VxResult GetEntriesCount(std::int64_t& count) const override;
    VxResult GetEntryByIndex(std::int64_t index, const VxGenEnumEntry** entry) const override;
    VxResult GetValue(VxString& to) const override { return Read("GetValue", value, to); }
    /// NOT_FOUND for a name that is no entry.
    VxResult SetValue(const VxString& from) override;
    VxResult ToString(VxString& text) const override { return Read("ToString", value, text); }
    VxResult FromString(const VxString& text) override { return SetValue(text); }

private:
    mutable std::vector<std::unique_ptr<ScriptedEnumEntry>> m_lent;
};

/// A feature whose kind is outside those that the module names.
class ScriptedNode final : public ScriptedFeature<VxGenParameter, VxGenType::Unknown> {
public:
    VxResult ToString(VxString&) const override { return VxError::NotSupported; }
    VxResult FromString(const VxString&) override { return VxError::NotSupported; }
};

/// A list of features that the test fills.
///
/// Owner:  CameraDouble.
/// Thread: filled before use.
class ScriptedFeatures final : public VxGenParameterArray {
public:
    explicit ScriptedFeatures(std::string owner) : m_owner(std::move(owner)) {}

    template <typename Feature>
    Feature& Add(const std::string& name)
    {
        auto feature = std::make_unique<Feature>();
        Feature& added = *feature;
        added.name = name;
        added.owner = m_owner;
        m_features.push_back(std::move(feature));
        return added;
    }

    ScriptedInteger& AddInteger(const std::string& name, std::int64_t value);
    ScriptedEnum& AddEnum(const std::string& name, std::vector<std::string> entries);

    [[nodiscard]] std::size_t GetCount() const override { return m_features.size(); }
    [[nodiscard]] VxGenParameter* Get(std::size_t index) const override;
    [[nodiscard]] VxGenParameter* Get(const VxString& name) const override;

private:
    std::string m_owner;
    std::vector<std::unique_ptr<VxGenParameter>> m_features;
};
