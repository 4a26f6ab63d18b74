#include "VxCamera/surface/StreamStatistics.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "VxCamera/surface/ListedBoolean.h"
#include "VxCamera/surface/ListedCommand.h"
#include "VxCamera/surface/ListedEnum.h"
#include "VxCamera/surface/ListedFloat.h"
#include "VxCamera/surface/ListedInteger.h"
#include "VxCamera/surface/ListedString.h"
#include "VxCamera/surface/VxStreamImpl.h"

namespace {

using receive::AssemblySettings;
using receive::Counter;
using receive::StreamCounters;
using receive::StreamReceiver;
using std::chrono::microseconds;
using std::chrono::milliseconds;
using enum VxGenVisibility;

constexpr const char* kStatistics = "root\\Statistics";
constexpr const char* kResend = "root\\Resend";
constexpr const char* kReceiver = "root\\Receiver";

/// What "LastError" can say, and what it means. A number that is not in the list counts as the last one.
struct StreamError {
    VxError code;
    const char* meaning;
};
constexpr std::array kStreamErrors{
    StreamError{VxError::Ok, ""},
    StreamError{VxError::MissingPackets, "a block arrived incomplete"},
    StreamError{VxError::BufferTooSmall,
                "a block carried a picture that is larger than the pipeline's buffers"},
    StreamError{VxError::NotAnImage, "a block carried something else than an image"},
    StreamError{VxError::CameraError, "the camera lost data of a block itself"},
    StreamError{VxError::NotSupported,
                "the lines of a block's picture run together, and do not begin with a byte; another width or "
                "pixel format helps"},
    StreamError{VxError::InvalidData, "a block announced a picture that cannot be"},
    StreamError{VxError::NetworkError, "the system refused to receive"},
    StreamError{
        VxError::Timeout,
        "no packet arrived for one second. Likely causes: a firewall on this machine holds them back; "
        "the camera's packets are larger than the network between carries; the camera sends to another "
        "destination; another host controls the camera; the camera is not acquiring, or waits for a "
        "trigger"},
    StreamError{VxError::OutOfMemory, "the system has no memory left"},
    StreamError{VxError::Failed, "the receiver failed"},
};

/// Of TIMEOUT, when packets came from another address than the camera's.
constexpr const char* kOthersHaveSent =
    "no packet of the camera arrived for one second, but packets from another address did; PacketsForeign "
    "counts them. Likely causes: the camera has got another address since the stream was opened; another "
    "camera sends to the same port. Open the stream again with the address that the camera has now, and have "
    "no other one send here";

/// A feature that shows the sum of some counters; the unused ones are null.
struct CounterRow {
    const char* name;
    VxGenVisibility visibility;
    std::array<Counter StreamCounters::*, 4> counters;
};

constexpr std::array kCounterRows{
    CounterRow{"BlockCount", Beginner, {&StreamCounters::blocksComplete}},
    CounterRow{"BlocksDropped", Beginner, {&StreamCounters::blocksLost}},
    CounterRow{"PipelineBlocksDropped", Beginner, {&StreamCounters::blocksUnbuffered}},
    CounterRow{"ErrorCount",
               Beginner,
               {&StreamCounters::blocksIncomplete, &StreamCounters::blocksBufferTooSmall,
                &StreamCounters::blocksNotAnImage, &StreamCounters::blocksDamaged}},
    CounterRow{"BlocksIncomplete", Expert, {&StreamCounters::blocksIncomplete}},
    CounterRow{"BlocksBufferTooSmall", Expert, {&StreamCounters::blocksBufferTooSmall}},
    CounterRow{"BlocksNotAnImage", Expert, {&StreamCounters::blocksNotAnImage}},
    CounterRow{"BlocksDamaged", Expert, {&StreamCounters::blocksDamaged}},
    CounterRow{"PacketCount", Beginner, {&StreamCounters::packets}},
    CounterRow{"PacketsMissing", Beginner, {&StreamCounters::packetsMissing}},
    CounterRow{"PacketsRequestedAgain", Expert, {&StreamCounters::packetsRequestedAgain}},
    CounterRow{"PacketsRecovered", Expert, {&StreamCounters::packetsRecovered}},
    CounterRow{"PacketsRefused", Expert, {&StreamCounters::packetsRefused}},
    CounterRow{"PacketsDuplicate", Expert, {&StreamCounters::packetsDuplicate}},
    CounterRow{"PacketsForeign", Expert, {&StreamCounters::packetsForeign}},
    CounterRow{"PacketsLate", Expert, {&StreamCounters::packetsLate}},
    CounterRow{"PacketsOutOfRange", Guru, {&StreamCounters::packetsOutOfRange}},
    CounterRow{"PacketsWrongSize", Guru, {&StreamCounters::packetsWrongSize}},
    CounterRow{"PacketsMalformed", Guru, {&StreamCounters::packetsMalformed}},
    CounterRow{"PacketsUnsupported", Guru, {&StreamCounters::packetsUnsupported}},
    CounterRow{"PacketsErrorStatus", Guru, {&StreamCounters::packetsErrorStatus}},
    CounterRow{"PacketsUnbuffered", Guru, {&StreamCounters::packetsUnbuffered}},
    CounterRow{"PacketsTest", Guru, {&StreamCounters::packetsTest}},
    CounterRow{"ResendRequests", Expert, {&StreamCounters::resendRequests}},
};

/// How the receiver knows whose packets count.
constexpr std::array<std::string_view, 3> kCameraSources{"Unknown", "ConnectionID", "FirstLeader"};

/// Asks the receiver for something; a closed stream gives the value's zero.
template <typename Value>
Value Ask(const VxStreamImpl& stream, const std::function<Value(const StreamReceiver&)>& question)
{
    Value value{};
    stream.WithReceiver([&](StreamReceiver& receiver) { value = question(receiver); });
    return value;
}

std::int64_t Sum(const StreamCounters& counters, const CounterRow& row)
{
    std::uint64_t sum = 0;
    for (const auto counter : row.counters)
        sum += counter != nullptr ? (counters.*counter).Value() : 0;
    return static_cast<std::int64_t>(sum); // fits: 2^63 packets do not arrive
}

void ListRates(VxStreamImpl& stream, ParameterList& list)
{
    list.Add<ListedFloat>(ParameterFacts{"AcquisitionRate", kStatistics, Beginner, "FPS"}, [&stream] {
        return Ask<double>(stream, [](const StreamReceiver& r) { return r.Rates().blocksPerSecond; });
    });
    list.Add<ListedFloat>(ParameterFacts{"Bandwidth", kStatistics, Beginner, "bit/s"}, [&stream] {
        return Ask<double>(stream, [](const StreamReceiver& r) { return r.Rates().bitsPerSecond; });
    });
    const auto latency = [&stream](microseconds StreamReceiver::Latency::*which) {
        return ListedInteger::Access{[&stream, which] {
                                         return Ask<std::int64_t>(stream, [which](const StreamReceiver& r) {
                                             return (r.Latencies().*which).count();
                                         });
                                     },
                                     {}};
    };
    list.Add<ListedInteger>(ParameterFacts{"Latency", kStatistics, Expert, "us"},
                            latency(&StreamReceiver::Latency::latest));
    list.Add<ListedInteger>(ParameterFacts{"LatencyMax", kStatistics, Expert, "us"},
                            latency(&StreamReceiver::Latency::longest));
}

void ListCounters(VxStreamImpl& stream, ParameterList& list)
{
    for (const CounterRow& row : kCounterRows) {
        const auto get = [&stream, &row]() -> std::int64_t {
            return Ask<std::int64_t>(stream, [&](const StreamReceiver& r) { return Sum(r.Counters(), row); });
        };
        list.Add<ListedInteger>(ParameterFacts{row.name, kStatistics, row.visibility},
                                ListedInteger::Access{get, {}});
    }
}

std::size_t LastErrorIndex(const VxStreamImpl& stream)
{
    const auto code = Ask<VxError>(stream, [](const StreamReceiver& r) { return r.LastError(); });
    const auto* const found = std::ranges::find(kStreamErrors, code, &StreamError::code);
    const auto* const known = found != kStreamErrors.end() ? found : kStreamErrors.end() - 1;
    return static_cast<std::size_t>(known - kStreamErrors.begin());
}

const char* LastErrorMeaning(const VxStreamImpl& stream)
{
    const StreamError& error = kStreamErrors[LastErrorIndex(stream)];
    const bool haveOthersSent = Ask<bool>(stream, [](const StreamReceiver& r) { return r.HaveOthersSent(); });
    return error.code == VxError::Timeout && haveOthersSent ? kOthersHaveSent : error.meaning;
}

void ListLastError(VxStreamImpl& stream, ParameterList& list)
{
    std::vector<std::string_view> names;
    for (const StreamError& error : kStreamErrors)
        names.push_back(VxErrorName(error.code));
    list.Add<ListedEnum>(ParameterFacts{"LastError", kStatistics}, names,
                         [&stream] { return LastErrorIndex(stream); });
    list.Add<ListedString>(ParameterFacts{"LastErrorDescription", kStatistics},
                           [&stream] { return VxString(LastErrorMeaning(stream)); });
}

/// A time that can be set, in the unit of Duration.
template <typename Duration, typename Get>
ListedInteger::Access TimeAccess(VxStreamImpl& stream, const Get& member, std::int64_t longest)
{
    return {[&stream, member]() -> std::int64_t {
                AssemblySettings settings = stream.Settings();
                return member(settings).count();
            },
            [&stream, member](std::int64_t value) {
                stream.ChangeSettings(
                    [&](AssemblySettings& settings) { member(settings) = Duration(value); });
                return VxResult::Ok();
            },
            0, longest};
}

void ListResend(VxStreamImpl& stream, ParameterList& list)
{
    // Chosen: more than this is no live picture any more.
    constexpr std::int64_t kLongestMs = 10'000;
    constexpr std::int64_t kLongestUs = 1'000'000;
    list.Add<ListedBoolean>(
        ParameterFacts{"ResendEnabled", kResend, Expert}, [&stream] { return stream.Settings().resend.isOn; },
        [&stream](bool isOn) {
            stream.ChangeSettings([isOn](AssemblySettings& settings) { settings.resend.isOn = isOn; });
        });
    list.Add<ListedBoolean>(
        ParameterFacts{"ResendPossible", kResend, Expert},
        [&stream] { return Ask<bool>(stream, [](const StreamReceiver& r) { return r.CanResend(); }); },
        nullptr);
    list.Add<ListedInteger>(
        ParameterFacts{"ResendGapTimeout", kResend, Expert, "us"},
        TimeAccess<microseconds>(
            stream, [](AssemblySettings & s) -> auto& { return s.resend.gapTimeout; }, kLongestUs));
    list.Add<ListedInteger>(
        ParameterFacts{"ResendAnswerTimeout", kResend, Expert, "us"},
        TimeAccess<microseconds>(
            stream, [](AssemblySettings & s) -> auto& { return s.resend.answerTimeout; }, kLongestUs));
    list.Add<ListedInteger>(
        ParameterFacts{"ResendTimeout", kResend, Expert, "ms"},
        TimeAccess<milliseconds>(
            stream, [](AssemblySettings & s) -> auto& { return s.resendTimeout; }, kLongestMs));
    list.Add<ListedInteger>(
        ParameterFacts{"BlockTimeout", kReceiver, Expert, "ms"},
        TimeAccess<milliseconds>(
            stream, [](AssemblySettings & s) -> auto& { return s.blockTimeout; }, kLongestMs));
}

void ListCamera(VxStreamImpl& stream, ParameterList& list)
{
    list.Add<ListedString>(ParameterFacts{"CameraIPAddress", kReceiver}, [&stream] {
        return Ask<VxString>(stream, [](const StreamReceiver& r) {
            const auto camera = r.Camera();
            return camera ? VxString(camera->ToString()) : VxString();
        });
    });
    list.Add<ListedEnum>(ParameterFacts{"CameraIPAddressSource", kReceiver, Expert},
                         std::vector<std::string_view>(kCameraSources.begin(), kCameraSources.end()),
                         [&stream] {
                             return Ask<std::size_t>(stream, [](const StreamReceiver& r) -> std::size_t {
                                 if (r.IsCameraGiven())
                                     return 1;
                                 return r.Camera() ? 2 : 0;
                             });
                         });
}

void ListReceiver(VxStreamImpl& stream, ParameterList& list)
{
    list.Add<ListedString>(ParameterFacts{"LocalIPAddress", kReceiver}, [&stream] {
        return stream.IsOpen() ? VxString(stream.ReachedAt().ToString()) : VxString();
    });
    const auto number = [&stream](std::int64_t (*question)(const StreamReceiver&)) {
        return ListedInteger::Access{[&stream, question] { return Ask<std::int64_t>(stream, question); }, {}};
    };
    list.Add<ListedInteger>(
        ParameterFacts{"LocalPort", kReceiver},
        number([](const StreamReceiver& r) -> std::int64_t { return r.Socket().LocalEndpoint().port; }));
    ListCamera(stream, list);
    list.Add<ListedInteger>(ParameterFacts{"SocketBufferSize", kReceiver, Expert, "B"},
                            number([](const StreamReceiver& r) {
                                return static_cast<std::int64_t>(r.Socket().ReceiveBufferBytes()); // some MiB
                            }));
    list.Add<ListedBoolean>(
        ParameterFacts{"PacketRingUsed", kReceiver, Expert},
        [&stream] {
            return Ask<bool>(stream, [](const StreamReceiver& r) { return r.Socket().IsBacklogNear(); });
        },
        nullptr);
}

} // namespace

void ListStreamStatistics(VxStreamImpl& stream, ParameterList& list)
{
    ListRates(stream, list);
    ListCounters(stream, list);
    ListLastError(stream, list);
    ListResend(stream, list);
    ListReceiver(stream, list);
    list.Add<ListedCommand>(ParameterFacts{"Reset", kStatistics}, [&stream] {
        stream.WithReceiver([](StreamReceiver& receiver) { receiver.ResetStatistics(); });
    });
}
