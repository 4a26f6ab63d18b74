#include "VxCamera/transport/posix/DatagramFilter.h"

#include "VxCamera/transport/posix/PosixSystem.h"

#include <linux/filter.h>
#include <linux/if_packet.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstddef>
#include <span>
#include <vector>

namespace transport {

namespace {

// What a program answers: how much of the packet is taken. More than any packet has; nothing.
constexpr std::uint32_t kAll = 0x40000;
constexpr std::uint32_t kNothing = 0;

constexpr std::uint32_t kIpV4WithoutOptions = 0x45;
constexpr std::uint32_t kUdp = 17;
constexpr std::uint32_t kFragmentBits = 0x3FFF; // "more fragments", and where this one belongs

/// Of the packet's IP header, wherever it lies.
constexpr std::uint32_t InIpHeader(int offset)
{
    return static_cast<std::uint32_t>(SKF_NET_OFF + offset); // negative by design
}

constexpr std::uint32_t AboutPacket(int what)
{
    return static_cast<std::uint32_t>(SKF_AD_OFF + what); // negative by design
}

/// A program of the system's packet filter: a chain of questions with two answers.
///
/// Owner:  the scope that attaches it.
/// Thread: one.
class FilterProgram {
public:
    void Load(int size, std::uint32_t where)
    {
        m_steps.push_back({static_cast<std::uint16_t>(BPF_LD | BPF_ABS | size), 0, 0, where});
    }

    /// Of what was loaded last. A packet that does not answer as it must is of the other kind.
    void MustEqual(std::uint32_t value) { Ask(BPF_JEQ, value, Answer::Yes); }
    void MustNotHave(std::uint32_t bits) { Ask(BPF_JSET, bits, Answer::No); }

    /// @param match  what happens to those that answer every question as they must
    VxResult Attach(int socket, std::uint32_t match, std::uint32_t other)
    {
        const std::size_t matchAt = m_steps.size();
        m_steps.push_back({BPF_RET | BPF_K, 0, 0, match});
        m_steps.push_back({BPF_RET | BPF_K, 0, 0, other});
        for (const auto& [step, wanted] : m_questions) {
            const auto toOther = static_cast<std::uint8_t>(matchAt - step); // a program has a few dozen steps
            (wanted == Answer::Yes ? m_steps[step].jf : m_steps[step].jt) = toOther;
        }
        const sock_fprog program{static_cast<unsigned short>(m_steps.size()), m_steps.data()}; // a few dozen
        if (::setsockopt(socket, SOL_SOCKET, SO_ATTACH_FILTER, &program, sizeof program) != 0)
            return SystemFailure("filter the packets of a socket", errno);
        return VxResult::Ok();
    }

private:
    enum class Answer { Yes, No };
    struct Question {
        std::size_t step;
        Answer wanted;
    };

    void Ask(int how, std::uint32_t value, Answer wanted)
    {
        m_questions.push_back({m_steps.size(), wanted});
        m_steps.push_back({static_cast<std::uint16_t>(BPF_JMP | BPF_K | how), 0, 0, value});
    }

    std::vector<sock_filter> m_steps;
    std::vector<Question> m_questions;
};

FilterProgram ProgramOf(const DatagramRoute& route)
{
    FilterProgram program;
    program.Load(BPF_W, AboutPacket(SKF_AD_IFINDEX));
    program.MustEqual(route.interfaceIndex);
    program.Load(BPF_W, AboutPacket(SKF_AD_PKTTYPE));
    program.MustEqual(PACKET_HOST); // neither other hosts' nor what this one sends
    program.Load(BPF_B, InIpHeader(0));
    program.MustEqual(kIpV4WithoutOptions);
    program.Load(BPF_B, InIpHeader(9));
    program.MustEqual(kUdp);
    program.Load(BPF_H, InIpHeader(6));
    program.MustNotHave(kFragmentBits);
    program.Load(BPF_W, InIpHeader(16));
    program.MustEqual(route.destination.address.Value());
    program.Load(BPF_H, InIpHeader(22)); // of the UDP header behind it
    program.MustEqual(route.destination.port);
    return program;
}

} // namespace

VxResult TakeOnly(int socket, const DatagramRoute& route)
{
    return ProgramOf(route).Attach(socket, kAll, kNothing);
}

VxResult LeaveOut(int socket, const DatagramRoute& route)
{
    return ProgramOf(route).Attach(socket, kNothing, kAll);
}

void LeaveOutNothing(int socket)
{
    const int unused = 0;
    ::setsockopt(socket, SOL_SOCKET, SO_DETACH_FILTER, &unused, sizeof unused); // fails where there is none
}

} // namespace transport
