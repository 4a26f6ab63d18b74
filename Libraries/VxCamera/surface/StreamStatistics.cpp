#include "VxCamera/surface/StreamStatistics.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <string_view>
#include <vector>

#include "VxCamera/surface/ListedCommand.h"
#include "VxCamera/surface/ListedEnum.h"
#include "VxCamera/surface/ListedFloat.h"
#include "VxCamera/surface/ListedInteger.h"
#include "VxCamera/surface/ListedString.h"
#include "VxCamera/surface/VxStreamImpl.h"

namespace {

using receive::Counter;
using receive::StreamCounters;
using receive::StreamReceiver;

constexpr const char* kStatistics = "root\\Statistics";
constexpr const char* kReceiver = "root\\Receiver";

/// What "LastError" can say.
constexpr std::array kStreamErrors{
    VxError::Ok,          VxError::MissingPackets, VxError::BufferTooSmall, VxError::NotAnImage,
    VxError::CameraError, VxError::InvalidData,    VxError::NetworkError,   VxError::Failed,
};

/// A feature that shows one counter, or the sum of several.
struct CounterRow {
    const char* name;
    VxGenVisibility visibility;
    std::vector<Counter StreamCounters::*> counters;
};

const std::vector<CounterRow>& CounterRows()
{
    using enum VxGenVisibility;
    static const std::vector<CounterRow> rows{
        {"BlockCount", Beginner, {&StreamCounters::blocksComplete}},
        {"BlocksDropped", Beginner, {&StreamCounters::blocksLost}},
        {"PipelineBlocksDropped", Beginner, {&StreamCounters::blocksUnbuffered}},
        {"ErrorCount",
         Beginner,
         {&StreamCounters::blocksIncomplete, &StreamCounters::blocksBufferTooSmall,
          &StreamCounters::blocksNotAnImage, &StreamCounters::blocksDamaged}},
        {"BlocksIncomplete", Expert, {&StreamCounters::blocksIncomplete}},
        {"BlocksBufferTooSmall", Expert, {&StreamCounters::blocksBufferTooSmall}},
        {"BlocksNotAnImage", Expert, {&StreamCounters::blocksNotAnImage}},
        {"BlocksDamaged", Expert, {&StreamCounters::blocksDamaged}},
        {"PacketCount", Beginner, {&StreamCounters::packets}},
        {"PacketsMissing", Beginner, {&StreamCounters::packetsMissing}},
        {"PacketsForeign", Expert, {&StreamCounters::packetsForeign}},
        {"PacketsDuplicate", Expert, {&StreamCounters::packetsDuplicate}},
        {"PacketsLate", Expert, {&StreamCounters::packetsLate}},
        {"PacketsOutOfRange", Guru, {&StreamCounters::packetsOutOfRange}},
        {"PacketsWrongSize", Guru, {&StreamCounters::packetsWrongSize}},
        {"PacketsMalformed", Guru, {&StreamCounters::packetsMalformed}},
        {"PacketsUnsupported", Guru, {&StreamCounters::packetsUnsupported}},
        {"PacketsErrorStatus", Guru, {&StreamCounters::packetsErrorStatus}},
        {"PacketsUnbuffered", Guru, {&StreamCounters::packetsUnbuffered}},
        {"PacketsTest", Guru, {&StreamCounters::packetsTest}},
    };
    return rows;
}

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
        sum += (counters.*counter).Value();
    return static_cast<std::int64_t>(sum); // fits: 2^63 packets do not arrive
}

void ListRates(VxStreamImpl& stream, ParameterList& list)
{
    list.Add<ListedFloat>(ParameterFacts{"AcquisitionRate", kStatistics}, [&stream] {
        return Ask<double>(stream, [](const StreamReceiver& r) { return r.Rates().blocksPerSecond; });
    });
    list.Add<ListedFloat>(ParameterFacts{"Bandwidth", kStatistics}, [&stream] {
        return Ask<double>(stream, [](const StreamReceiver& r) { return r.Rates().bitsPerSecond; });
    });
}

void ListCounters(VxStreamImpl& stream, ParameterList& list)
{
    for (const CounterRow& row : CounterRows()) {
        const auto get = [&stream, &row]() -> std::int64_t {
            return Ask<std::int64_t>(stream, [&](const StreamReceiver& r) { return Sum(r.Counters(), row); });
        };
        list.Add<ListedInteger>(ParameterFacts{row.name, kStatistics, row.visibility},
                                ListedInteger::Access{get, {}});
    }
}

void ListLastError(VxStreamImpl& stream, ParameterList& list)
{
    std::vector<std::string_view> names;
    for (const VxError code : kStreamErrors)
        names.push_back(VxErrorName(code));
    list.Add<ListedEnum>(ParameterFacts{"LastError", kStatistics}, names, [&stream] {
        const auto code = Ask<VxError>(stream, [](const StreamReceiver& r) { return r.LastError(); });
        const auto* const found = std::ranges::find(kStreamErrors, code);
        const auto* const known = found != kStreamErrors.end() ? found : kStreamErrors.end() - 1;
        return static_cast<std::size_t>(known - kStreamErrors.begin());
    });
}

void ListReceiver(VxStreamImpl& stream, ParameterList& list)
{
    list.Add<ListedString>(ParameterFacts{"LocalIPAddress", kReceiver}, [&stream] {
        return Ask<VxString>(stream, [](const StreamReceiver& r) {
            return VxString(r.Socket().LocalEndpoint().address.ToString());
        });
    });
    list.Add<ListedInteger>(ParameterFacts{"LocalPort", kReceiver},
                            ListedInteger::Access{[&stream] {
                                                      return Ask<std::int64_t>(
                                                          stream, [](const StreamReceiver& r) {
                                                              return r.Socket().LocalEndpoint().port;
                                                          });
                                                  },
                                                  {}});
    list.Add<ListedString>(ParameterFacts{"CameraIPAddress", kReceiver}, [&stream] {
        return Ask<VxString>(stream, [](const StreamReceiver& r) {
            const auto camera = r.Camera();
            return camera ? VxString(camera->ToString()) : VxString();
        });
    });
    list.Add<ListedInteger>(
        ParameterFacts{"SocketBufferSize", kReceiver, VxGenVisibility::Expert},
        ListedInteger::Access{[&stream] {
                                  return Ask<std::int64_t>(stream, [](const StreamReceiver& r) {
                                      return static_cast<std::int64_t>(
                                          r.Socket().ReceiveBufferBytes()); // some MiB
                                  });
                              },
                              {}});
}

} // namespace

void ListStreamStatistics(VxStreamImpl& stream, ParameterList& list)
{
    ListRates(stream, list);
    ListCounters(stream, list);
    ListLastError(stream, list);
    ListReceiver(stream, list);
    list.Add<ListedCommand>(ParameterFacts{"Reset", kStatistics}, [&stream] {
        stream.WithReceiver([](StreamReceiver& receiver) { receiver.ResetStatistics(); });
    });
}
