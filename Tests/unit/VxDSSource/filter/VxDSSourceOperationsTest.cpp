// Every method of the filter's own interfaces: beside which it runs, what it leaves behind, and what becomes
// of it without memory.

#include "FailingMemory.h"
#include "FilterFixture.h"
#include "FilterOperations.h"
#include "TaskMemorySpy.h"
#include "support/directshow/Gate.h"
#include "unit/VxDSSource/stream/CanarySample.h"

#include <set>
#include <stdexcept>
#include <string>
#include <thread>

namespace {

class VxDSSourceOperationsTest : public FilterFixture {
protected:
    VxDSSourceOperationsTest()
    {
        AddFeaturesOfOperations();
        Connect();
        m_frames = As<IAMDroppedFrames>(IID_IAMDroppedFrames);
        m_pages = As<ISpecifyPropertyPages>(IID_ISpecifyPropertyPages);
        m_persist = As<IPersistStream>(IID_IPersistStream);
    }
    ~VxDSSourceOperationsTest() override
    {
        m_frames.Reset();
        m_pages.Reset();
        m_persist.Reset();
    }

    HRESULT Call(const FilterOperation& operation)
    {
        FilterUnderTest filter{Control(), *m_frames.Get(), *m_pages.Get(), *m_persist.Get()};
        return operation.call(filter);
    }

    /// Everything as the operations expect it, whatever happened before.
    void Prepare()
    {
        TheCamera().retrievals.clear();
        EXPECT_EQ(Control().SetDeviceId(TestText(L"cam")), S_OK);
        EXPECT_EQ(Control().Connect(), S_OK);
        EXPECT_EQ(Control().SetParameterArray(1), S_OK);
        TheCamera().log.Clear();
    }

    /// Runs an operation while a frame waits in vain for a good buffer, as it does until somebody wants its
    /// mutex.
    /// @return  whether the operation ended before the frame
    bool RunsBesideAFrame(const FilterOperation& operation)
    {
        Gate hasEnded;
        bool endedBeforeTheFrame = false;
        HRESULT result = E_PENDING;
        std::thread other;
        TheCamera().onRetrieve = [&] {
            if (!other.joinable()) {
                other = std::thread([&] {
                    result = Call(operation);
                    hasEnded.Pass();
                });
            }
            if (operation.beside == Beside::Frame)
                endedBeforeTheFrame = hasEnded.WaitFor();
            else
                endedBeforeTheFrame = hasEnded.Count() > 0;
            if (!endedBeforeTheFrame)
                TheCamera().QueueIncomplete(); // the frame goes on
        };
        CanarySample sample(16);
        EXPECT_EQ(Pin().FillBuffer(&sample), S_OK);
        TheCamera().onRetrieve = nullptr;
        other.join();
        EXPECT_TRUE(SUCCEEDED(result)) << std::hex << result;
        return endedBeforeTheFrame;
    }

    /// Runs an operation while the n-th call on the camera library throws.
    /// @param[out] thrower  that call; empty when there were fewer
    HRESULT CallWhileOneThrows(const FilterOperation& operation, int nth, std::string& thrower)
    {
        int calls = 0;
        TheCamera().log.onCall = [&](const std::string& call) {
            // What ends something cannot throw.
            if (call.starts_with("delete ") || call == "VxDevice::Free" || calls++ != nth)
                return;
            thrower = call;
            throw std::runtime_error(call);
        };
        const HRESULT result = Call(operation);
        TheCamera().log.onCall = nullptr;
        return result;
    }

    /// Operations that read and store what the filter has by itself.
    static bool AsksTheCameraNothing(const std::string& operation)
    {
        static const std::set<std::string> names = {
            "GetRole",
            "SetRole",
            "GetUnicastPort",
            "SetUnicastPort",
            "GetMulticastAddress",
            "SetMulticastAddress",
            "GetMulticastPort",
            "SetMulticastPort",
            "GetDiagnosticsEnabled",
            "SetDiagnosticsEnabled",
            "GetDeviceId",
            "SetDeviceId",
            "GetParamSource",
            "SetParamSource",
            "GetParamChannel",
            "SetParamChannel",
            "GetBufferCount",
            "SetBufferCount",
            "GetDefaultBufferSize",
            "SetDefaultBufferSize",
            "GetDropThreshold",
            "SetDropThreshold",
            "GetWidth",
            "GetHeight",
            "GetParameterArray",
            "SetParameterArray",
            "GetOutputPixelType",
            "GetKernelSize",
            "SetKernelSize",
            "GetZoomValue",
            "SetZoomValue",
            "GetOutputSize",
            "ClearDefault",
            "GetDefaultSummary",
            "GetNumDropped",
            "GetNumNotDropped",
            "GetDroppedInfo",
            "GetAverageFrameSize",
            "GetPages",
            "IsDirty",
            "GetSizeMax",
        };
        return names.contains(operation);
    }

    VxComPtr<IAMDroppedFrames> m_frames;
    VxComPtr<ISpecifyPropertyPages> m_pages;
    VxComPtr<IPersistStream> m_persist;
};

TEST_F(VxDSSourceOperationsTest, SucceedOneAndAll)
{
    for (const FilterOperation& operation : FilterOperations()) {
        Prepare();
        EXPECT_EQ(Call(operation), S_OK) << operation.name;
    }
}

TEST_F(VxDSSourceOperationsTest, WaitForAFrameOnlyWhereTheyMust)
{
    for (const FilterOperation& operation : FilterOperations()) {
        Prepare();
        EXPECT_EQ(RunsBesideAFrame(operation), operation.beside == Beside::Frame) << operation.name;
    }
}

TEST_F(VxDSSourceOperationsTest, ReadAndStoreWhileAConnectIsUnderWay)
{
    Gate hasEnded;
    std::thread other;
    TheCamera().onConnect = [&] {
        other = std::thread([&] {
            EXPECT_EQ(Control().SetBufferCount(7), S_OK);
            UINT number = 0;
            EXPECT_EQ(Control().GetBufferCount(&number), S_OK);
            EXPECT_EQ(number, 7u);
            EXPECT_EQ(Control().SetZoomValue(2), S_OK);
            EXPECT_EQ(Control().GetWidth(&number), S_OK);
            long frames = 0;
            EXPECT_EQ(m_frames->GetNumDropped(&frames), S_OK);
            TestText text;
            EXPECT_EQ(Control().GetDeviceId(text.Put()), S_OK);
            EXPECT_EQ(Control().GetDefaultSummary(text.Put()), S_OK);
            hasEnded.Pass();
        });
        EXPECT_TRUE(hasEnded.WaitFor());
    };
    EXPECT_EQ(Control().SetDeviceId(TestText(L"another")), S_OK);

    EXPECT_EQ(Control().Connect(), S_OK);

    other.join();
}

TEST_F(VxDSSourceOperationsTest, LeaveNothingBehind)
{
    const TaskMemorySpy& taskMemory = TheTaskMemory();
    const auto round = [&] {
        for (const FilterOperation& operation : FilterOperations()) {
            Prepare();
            (void)Call(operation);
        }
        TheCamera().restored.clear();
        TheCamera().log.Clear();
    };
    for (int i = 0; i < 3; ++i)
        round(); // until everything that is kept has its size
    const long allocations = failing_memory::LiveAllocations();
    const long blocks = taskMemory.Live();

    for (int i = 0; i < 20; ++i)
        round();

    EXPECT_EQ(failing_memory::LiveAllocations(), allocations);
    EXPECT_EQ(taskMemory.Live(), blocks);
}

TEST_F(VxDSSourceOperationsTest, FailWithoutMemoryAndSucceedAgainWithIt)
{
    constexpr std::size_t kRoom = 10000; // calls: the list itself shall need no memory
    constexpr int kMost = 2000;          // allocations of one operation
    TheCamera().log.Reserve(kRoom);
    TheCamera().restored.reserve(kRoom);
    int failures = 0;
    for (const FilterOperation& operation : FilterOperations()) {
        for (int succeeding = 0; succeeding < kMost; ++succeeding) {
            Prepare();
            HRESULT result = E_PENDING;
            bool hasFailed = false;
            {
                const failing_memory::FailOnce failure(succeeding);
                result = Call(operation);
                hasFailed = failure.HasFailed();
            }
            if (!hasFailed) {
                EXPECT_TRUE(SUCCEEDED(result)) << operation.name;
                break;
            }
            ++failures;
            const std::string name = operation.name;
            const bool isOfTheDefault = name == "SaveDefault" || name == "ClearDefault";
            EXPECT_EQ(result, isOfTheDefault ? HRESULT{1} : E_OUTOFMEMORY)
                << name << ", allocation " << succeeding << ": " << std::hex << result;
        }
    }
    EXPECT_GT(failures, 100) << "the test made nothing fail";
    Prepare();
    EXPECT_EQ(TheCamera().livePipelines, 1);
}

TEST_F(VxDSSourceOperationsTest, LetNoExceptionOutOfTheCameraLibrary)
{
    constexpr int kMost = 200; // calls of one operation
    for (const FilterOperation& operation : FilterOperations()) {
        const std::string name = operation.name;
        bool hasThrown = true;
        for (int nth = 0; hasThrown; ++nth) {
            ASSERT_LT(nth, kMost) << name;
            Prepare();
            std::string thrower;
            const HRESULT result = CallWhileOneThrows(operation, nth, thrower);
            hasThrown = !thrower.empty();
            if (!hasThrown) {
                EXPECT_TRUE(SUCCEEDED(result)) << name;
                EXPECT_EQ(nth == 0, AsksTheCameraNothing(name)) << name << " made " << nth << " calls";
            } else if (name == "SaveDefault") {
                EXPECT_EQ(result, 1) << "whatever goes wrong: " << thrower;
            } else {
                EXPECT_EQ(result, E_FAIL) << name << ", " << thrower;
            }
        }
    }
    Prepare();
    EXPECT_EQ(TheCamera().livePipelines, 1) << "a connect after a failed one makes a whole link";
}

TEST_F(VxDSSourceOperationsTest, CanEndAfterACameraLibraryThatThrows)
{
    dynamic_cast<ScriptedCommand&>(*TheCamera().device->Get(VxString("AcquisitionStop"))).onWrite = [] {
        throw std::runtime_error("gone");
    };
    m_frames.Reset();
    m_pages.Reset();
    m_persist.Reset();

    DestroyFilter();

    EXPECT_EQ(TheCamera().liveDevices, 0);
    EXPECT_EQ(TheCamera().liveStreams, 0);
}

} // namespace
