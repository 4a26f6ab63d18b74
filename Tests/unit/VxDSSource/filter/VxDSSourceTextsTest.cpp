// Texts that are handed out while the system has no memory for them.

#include "FilterFixture.h"
#include "TaskMemorySpy.h"

namespace {

class VxDSSourceTextsTest : public FilterFixture {
protected:
    using Call = HRESULT (*)(IVxDSSource& control, BSTR name, BSTR* text);

    struct Row {
        const char* method;
        Call call;
        const wchar_t* feature;
        HRESULT result = E_OUTOFMEMORY; ///< without memory
        bool isReason = false;          ///< of a failure
    };

    template <auto kMethod>
    static HRESULT Plain(IVxDSSource& control, BSTR, BSTR* text)
    {
        return (control.*kMethod)(text);
    }

    template <auto kMethod>
    static HRESULT ByName(IVxDSSource& control, BSTR name, BSTR* text)
    {
        return (control.*kMethod)(name, text);
    }

    static const std::vector<Row>& Rows()
    {
        using I = IVxDSSource;
        static const std::vector<Row> rows = {
            {"GetMulticastAddress", Plain<&I::GetMulticastAddress>, nullptr},
            {"GetDeviceId", Plain<&I::GetDeviceId>, nullptr},
            {"GetSourceName", [](I& control, BSTR, BSTR* text) { return control.GetSourceName(0, text); },
             nullptr},
            {"GetParamSource", Plain<&I::GetParamSource>, nullptr},
            {"GetParameterName",
             [](I& control, BSTR, BSTR* text) { return control.GetParameterName(0, text); }, nullptr},
            {"GetParameterCategory", ByName<&I::GetParameterCategory>, L"Width"},
            {"GetParameterValue", ByName<&I::GetParameterValue>, L"Width"},
            {"SetParameterValue",
             [](I& control, BSTR name, BSTR* text) { return control.SetParameterValue(name, nullptr, text); },
             L"Refused", E_FAIL, true},
            {"GetParameterType", ByName<&I::GetParameterType>, L"Width"},
            {"ExecuteCommand", ByName<&I::ExecuteCommand>, L"Trigger", E_FAIL, true},
            {"GetEnumEntryName",
             [](I& control, BSTR name, BSTR* text) { return control.GetEnumEntryName(name, 0, text); },
             L"SourceSelector"},
            {"GetDefaultSummary", Plain<&I::GetDefaultSummary>, nullptr},
        };
        return rows;
    }
};

TEST_F(VxDSSourceTextsTest, AreNotHandedOutWithoutTaskMemory)
{
    TheCamera().device->AddEnum("SourceSelector", {"Left", "Right"});
    TheCamera().device->Add<ScriptedString>("Refused").writing = VxResult(VxError::Busy, "not now");
    TheCamera().device->Add<ScriptedCommand>("Trigger").writing = VxResult(VxError::Busy, "not armed");
    Connect();
    ASSERT_EQ(Control().SetParameterArray(1), S_OK);
    ASSERT_EQ(Control().SaveDefault(), 0);
    TaskMemorySpy& memory = TheTaskMemory();
    for (const Row& row : Rows()) {
        const TestText name(row.feature);
        wchar_t before[] = L"before";
        BSTR text = before; // not to be freed, nor replaced

        memory.isExhausted = true;
        const HRESULT result = row.call(Control(), name, &text);
        memory.isExhausted = false;

        EXPECT_EQ(result, row.result) << row.method;
        EXPECT_EQ(text, before) << row.method;

        TestText withMemory;
        EXPECT_EQ(row.call(Control(), name, withMemory.Put()), row.isReason ? E_FAIL : S_OK) << row.method;
        EXPECT_FALSE(withMemory.IsNull()) << row.method << ": only the memory was missing";
    }
}

} // namespace
