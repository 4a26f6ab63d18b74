#include "system/CameraHolder.h"
#include "system/GraphFile.h"
#include "system/LateRelease.h"

#include "VxDSSource/filter/IVxDSSource.h"
#include "VxDSSource/filter/Identifiers.h"

#include "VxBase/VxString.h"

#include "support/directshow/ComApartment.h"
#include "support/graph/FrameCatcher.h"
#include "support/graph/GrabberGraph.h"
#include "vxgrab/ComText.h"

#include <gtest/gtest.h>

#include <dshow.h>
#include <shellapi.h>

#include <cstdio>
#include <string>
#include <vector>

// The other process of tests that need two. Prints what it finds as NAME=VALUE.
//
//   save-graph FILE   sets up a filter and its camera at 127.0.0.1, builds a graph and saves it
//   load-graph FILE   loads the graph, tells what came back, and runs it until a picture comes
//   save-receiver FILE  sets up a filter that only listens to a group, delivers YUV, and saves it
//   load-receiver FILE  loads it and tells what came back
//   leave-behind      starts another process that inherits everything, tells its number, and ends
//   linger            does nothing for a minute
//   hold-camera CAMERA ADDRESS PORT  controls a camera that streams to somebody else, until it is ended
//   end before|after  ends with a filter that waits for frames; a module of the host, loaded before or after
//   the
//                     filter's, lets it go while the process ends

namespace {

using vxgrab::ComPtr;
using vxgrab::ComText;

constexpr std::chrono::seconds kPatience{20};

void Tell(const char* name, const std::string& value)
{
    std::printf("%s=%s\n", name, value.c_str());
}

/// @return  whether it went well; tells when it did not
bool IsFine(const char* step, HRESULT result)
{
    if (FAILED(result))
        std::printf("%s failed: %08lX\n", step, static_cast<unsigned long>(result));
    return SUCCEEDED(result);
}

HRESULT SetFeature(IVxDSSource& control, const char* name, const char* value)
{
    ComText error;
    return control.SetParameterValue(ComText(name).Get(), ComText(value).Get(), error.Put());
}

/// Values that differ from every default.
bool ChangeSettings(IVxDSSource& control)
{
    return IsFine("unicastport", control.SetUnicastPort(4711)) &&
           IsFine("multicastip", control.SetMulticastAddress(ComText("239.192.7.7").Get())) &&
           IsFine("multicastport", control.SetMulticastPort(2042)) &&
           IsFine("diagnosticsenabled", control.SetDiagnosticsEnabled(TRUE)) &&
           IsFine("paramchannel", control.SetParamChannel(1)) && // which a controller asks the camera for
           IsFine("buffercount", control.SetBufferCount(7)) &&
           IsFine("defaultbuffersize", control.SetDefaultBufferSize(4294967295U)) &&
           IsFine("dropthreshold", control.SetDropThreshold(3)) &&
           IsFine("kernelsize", control.SetKernelSize(3)) && IsFine("zoomvalue", control.SetZoomValue(-2)) &&
           IsFine("deviceid", control.SetDeviceId(ComText("127.0.0.1").Get()));
}

/// Values that differ from what the camera starts with.
bool ChangeFeatures(IVxDSSource& control)
{
    return IsFine("array", control.SetParameterArray(1)) &&
           IsFine("Width", SetFeature(control, "Width", "256")) &&
           IsFine("ExposureTime", SetFeature(control, "ExposureTime", "1234")) &&
           IsFine("Gamma", SetFeature(control, "Gamma", "1.5")) &&
           IsFine("output size", control.SetOutputSize(200, 150));
}

void TellFeatures(IVxDSSource& control)
{
    if (!IsFine("array", control.SetParameterArray(1)))
        return;
    for (const char* const name : {"Width", "Height", "ExposureTime", "Gamma"}) {
        ComText value;
        if (IsFine(name, control.GetParameterValue(ComText(name).Get(), value.Put())))
            Tell(name, value.Utf8());
    }
}

/// Creates a filter by its class and changes its settings.
bool CreateChangedFilter(ComPtr<IBaseFilter>& filter, ComPtr<IVxDSSource>& control)
{
    return IsFine("creation", ::CoCreateInstance(CLSID_VxDSSource, nullptr, CLSCTX_INPROC_SERVER,
                                                 IID_IBaseFilter, filter.PutVoid())) &&
           IsFine("control", filter.Query(IID_IVxDSSource, control)) && ChangeSettings(*control.Get());
}

bool SaveGraphInto(const std::filesystem::path& file)
{
    ComPtr<IBaseFilter> filter;
    ComPtr<IVxDSSource> control;
    if (!CreateChangedFilter(filter, control) || !IsFine("connect", control->Connect()) ||
        !ChangeFeatures(*control.Get()))
        return false;
    TellFeatures(*control.Get());
    FrameCatcher catcher;
    const GrabberGraph graph(filter, MEDIASUBTYPE_RGB32, catcher);
    return graph.IsBuilt() && IsFine("save", SaveGraph(file, *filter.Get(), MEDIASUBTYPE_RGB32));
}

bool SaveReceiverInto(const std::filesystem::path& file)
{
    ComPtr<IBaseFilter> filter;
    ComPtr<IVxDSSource> control;
    return CreateChangedFilter(filter, control) && IsFine("role", control->SetRole(2)) &&
           IsFine("paramsource", control->SetParamSource(ComText("Source7").Get())) &&
           IsFine("outputpixeltype", control->SetOutputPixelType(1)) &&
           IsFine("save", SaveGraph(file, *filter.Get(), MEDIASUBTYPE_YUY2));
}

void TellNumber(const char* name, IVxDSSource& control, HRESULT (STDMETHODCALLTYPE IVxDSSource::*get)(UINT*))
{
    UINT number = 0;
    if (IsFine(name, (control.*get)(&number)))
        Tell(name, std::to_string(static_cast<INT>(number)));
}

void TellText(const char* name, IVxDSSource& control, HRESULT (STDMETHODCALLTYPE IVxDSSource::*get)(BSTR*))
{
    ComText text;
    if (IsFine(name, (control.*get)(text.Put())))
        Tell(name, text.Utf8());
}

void TellSettings(IVxDSSource& control)
{
    TellNumber("role", control, &IVxDSSource::GetRole);
    TellNumber("unicastport", control, &IVxDSSource::GetUnicastPort);
    TellText("multicastip", control, &IVxDSSource::GetMulticastAddress);
    TellNumber("multicastport", control, &IVxDSSource::GetMulticastPort);
    BOOL isOn = FALSE;
    if (IsFine("diagnosticsenabled", control.GetDiagnosticsEnabled(&isOn)))
        Tell("diagnosticsenabled", std::to_string(isOn));
    TellText("deviceid", control, &IVxDSSource::GetDeviceId);
    TellText("paramsource", control, &IVxDSSource::GetParamSource);
    TellNumber("paramchannel", control, &IVxDSSource::GetParamChannel);
    TellNumber("buffercount", control, &IVxDSSource::GetBufferCount);
    TellNumber("defaultbuffersize", control, &IVxDSSource::GetDefaultBufferSize);
    TellNumber("dropthreshold", control, &IVxDSSource::GetDropThreshold);
    TellNumber("outputpixeltype", control, &IVxDSSource::GetOutputPixelType);
    TellNumber("kernelsize", control, &IVxDSSource::GetKernelSize);
    TellNumber("zoomvalue", control, &IVxDSSource::GetZoomValue);
    UINT width = 0;
    UINT height = 0;
    if (IsFine("output size", control.GetOutputSize(&width, &height)))
        Tell("output size", std::to_string(width) + " x " + std::to_string(height));
}

/// Loads a filter and tells its settings.
bool LoadFilterFrom(const std::filesystem::path& file, ComPtr<IBaseFilter>& filter, GUID& subtype)
{
    ComPtr<IVxDSSource> control;
    if (!IsFine("load", LoadGraph(file, filter, subtype)) ||
        !IsFine("control", filter.Query(IID_IVxDSSource, control)))
        return false;
    TellSettings(*control.Get());
    return true;
}

bool LoadReceiverFrom(const std::filesystem::path& file)
{
    ComPtr<IBaseFilter> filter;
    GUID subtype{};
    return LoadFilterFrom(file, filter, subtype);
}

bool LoadGraphFrom(const std::filesystem::path& file)
{
    ComPtr<IBaseFilter> filter;
    ComPtr<IVxDSSource> control;
    GUID subtype{};
    if (!LoadFilterFrom(file, filter, subtype) || !IsFine("control", filter.Query(IID_IVxDSSource, control)))
        return false;
    TellFeatures(*control.Get());
    FrameCatcher catcher;
    GrabberGraph graph(filter, subtype, catcher);
    if (!graph.IsBuilt() || !IsFine("run", graph.Run()))
        return false;
    const auto picture = catcher.WaitForPicture(kPatience);
    if (picture)
        Tell("picture", std::to_string(graph.Format().widthPx) + " x " +
                            std::to_string(graph.Format().heightPx) + ", " +
                            std::to_string(picture->bytes.size()) + " bytes");
    return IsFine("stop", graph.Stop()) && picture.has_value();
}

/// @param program  this program's file
bool LeaveBehind(const std::wstring& program)
{
    std::wstring commandLine = L"\"" + program + L"\" linger";
    STARTUPINFOW start{};
    start.cb = sizeof(start);
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdOutput = ::GetStdHandle(STD_OUTPUT_HANDLE);
    start.hStdError = ::GetStdHandle(STD_ERROR_HANDLE);
    PROCESS_INFORMATION process{};
    if (!::CreateProcessW(program.c_str(), commandLine.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                          &start, &process))
        return false;
    Tell("left behind", std::to_string(process.dwProcessId));
    ::CloseHandle(process.hThread);
    ::CloseHandle(process.hProcess);
    return true;
}

/// @param text  ASCII: an address
std::string Narrow(const std::wstring& text)
{
    return VxString(text).Narrow();
}

bool Do(const std::wstring& program, const std::vector<std::wstring>& arguments)
{
    if (arguments == std::vector<std::wstring>{L"leave-behind"})
        return LeaveBehind(program);
    if (arguments == std::vector<std::wstring>{L"linger"}) {
        constexpr DWORD kMinuteMs = 60'000;
        ::Sleep(kMinuteMs); // whoever left it behind has ended; the test ends it earlier
        return true;
    }
    if (arguments.size() == 4 && arguments[0] == L"hold-camera")
        return HoldCamera(Narrow(arguments[1]), Narrow(arguments[2]),
                          static_cast<std::uint16_t>(std::stoul(arguments[3])));
    const ComApartment apartment;
    if (arguments.size() == 2 && arguments[0] == L"save-graph")
        return SaveGraphInto(arguments[1]);
    if (arguments.size() == 2 && arguments[0] == L"load-graph")
        return LoadGraphFrom(arguments[1]);
    if (arguments.size() == 2 && arguments[0] == L"save-receiver")
        return SaveReceiverInto(arguments[1]);
    if (arguments.size() == 2 && arguments[0] == L"load-receiver")
        return LoadReceiverFrom(arguments[1]);
    if (arguments == std::vector<std::wstring>{L"end", L"before"})
        return EndProcessAndReleaseFilter(HostModule::Before);
    if (arguments == std::vector<std::wstring>{L"end", L"after"})
        return EndProcessAndReleaseFilter(HostModule::After);
    std::puts(
        "usage: save-graph FILE | load-graph FILE | save-receiver FILE | load-receiver FILE | leave-behind | "
        "linger | hold-camera CAMERA ADDRESS PORT | end before|after");
    return false;
}

} // namespace

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv); // the graph reports through it
    int count = 0;
    wchar_t** const words = ::CommandLineToArgvW(::GetCommandLineW(), &count);
    std::vector<std::wstring> arguments(words + 1, words + count);
    const bool isDone = Do(words[0], arguments);
    ::LocalFree(words);
    return isDone && !testing::Test::HasFailure() ? 0 : 1;
}
