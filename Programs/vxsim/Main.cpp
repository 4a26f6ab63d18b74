#include "vxsim/CommandLine.h"

#include "VxSimulator/VxSimulatedCamera.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <thread>

namespace {

// What the program ends with.
constexpr int kEndedAsAsked = 0;
constexpr int kFailed = 1;
constexpr int kWrongOrInUse = 2; // the options, or the port

// Chosen: short enough for a user who pressed Ctrl-C.
constexpr auto kLookInterval = std::chrono::milliseconds(50);

volatile std::sig_atomic_t g_isEndWanted = 0;

extern "C" void WantEnd(int signal)
{
    g_isEndWanted = 1;
    std::signal(signal, WantEnd); // some systems forget it when the signal comes
}

void CatchSignals()
{
    std::signal(SIGINT, WantEnd);
    std::signal(SIGTERM, WantEnd);
#ifdef SIGBREAK
    std::signal(SIGBREAK, WantEnd);
#endif
}

int Fail(const VxResult& failure)
{
    std::fprintf(stderr, "vxsim: error: %s\n", failure.GetDescription().GetAscii());
    const bool isTheUsers =
        failure.Code() == VxError::InvalidParameter || failure.Code() == VxError::PortInUse;
    return isTheUsers ? kWrongOrInUse : kFailed;
}

void TellCounters(const VxSimulatorCounters& counters)
{
    std::fprintf(
        stderr, "vxsim: %llu frames, %llu packets (%llu again), %llu dropped, %llu not sent, %llu commands\n",
        static_cast<unsigned long long>(counters.framesSent),
        static_cast<unsigned long long>(counters.packetsSent),
        static_cast<unsigned long long>(counters.packetsResent),
        static_cast<unsigned long long>(counters.packetsDropped),
        static_cast<unsigned long long>(counters.sendFailures),
        static_cast<unsigned long long>(counters.commandsReceived));
}

int Run(const vxsim::CommandLine& commandLine)
{
    const bool isVerbose = commandLine.talk == vxsim::Talk::Verbose;
    VxSimulatedCamera camera;
    if (isVerbose)
        camera.SetEventSink(
            [](const std::string& event) { std::fprintf(stderr, "vxsim: %s\n", event.c_str()); });
    CatchSignals();
    if (const auto started = camera.Start(commandLine.camera); !started.IsOK())
        return Fail(started);

    std::printf("ready %s %s\n", camera.ControlEndpoint().ToString().c_str(), camera.MacText().c_str());
    std::fflush(stdout);
    while (g_isEndWanted == 0)
        std::this_thread::sleep_for(kLookInterval); // ended by a signal
    if (isVerbose)
        TellCounters(camera.Counters());
    camera.Stop();
    return kEndedAsAsked;
}

} // namespace

int main(int argc, char** argv)
{
    const auto commandLine = vxsim::ParseCommandLine(argc, argv);
    if (!commandLine)
        return Fail(commandLine.Error());
    if (commandLine->helpText) {
        std::printf("%s", commandLine->helpText->c_str());
        return kEndedAsAsked;
    }
    return Run(*commandLine);
}
