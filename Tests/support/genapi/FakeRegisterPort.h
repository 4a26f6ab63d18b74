#pragma once

#include "VxCamera/genapi/IRegisterPort.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <map>
#include <optional>
#include <span>
#include <vector>

/// A camera's memory in a test: bytes that nobody wrote are 0, every access is counted, and any can be made
/// to fail.
///
/// Owner:  the test, by value; outlives the map on it.
/// Thread: one.
class FakeRegisterPort final : public genapi::IRegisterPort {
public:
    [[nodiscard]] bool IsOpen() const override { return !closed; }
    [[nodiscard]] VxResult CloseReason() const override { return closed ? *closed : VxResult::Ok(); }

    VxResult Read(std::uint64_t address, std::span<std::byte> bytes) override
    {
        ++reads;
        if (onAccess)
            onAccess();
        if (failure)
            return *failure;
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            const auto found = m_memory.find(address + i);
            bytes[i] = found == m_memory.end() ? std::byte{0} : found->second;
        }
        return VxResult::Ok();
    }

    VxResult Write(std::uint64_t address, std::span<const std::byte> bytes) override
    {
        ++writes;
        lastWriteAddress = address;
        lastWriteSize = bytes.size();
        if (onAccess)
            onAccess();
        if (failure)
            return *failure;
        for (std::size_t i = 0; i < bytes.size(); ++i)
            m_memory[address + i] = bytes[i];
        return VxResult::Ok();
    }

    /// Sets memory behind the map's back, as a camera does.
    void Put(std::uint64_t address, std::initializer_list<int> bytes)
    {
        for (const int byte : bytes)
            m_memory[address++] = static_cast<std::byte>(byte);
    }

    /// Sets a big-endian number of 4 bytes.
    void PutBe32(std::uint64_t address, std::uint32_t value)
    {
        for (unsigned i = 0; i < 4; ++i)
            m_memory[address + i] = static_cast<std::byte>(value >> (24 - 8 * i));
    }

    [[nodiscard]] std::vector<int> Get(std::uint64_t address, std::size_t size) const
    {
        std::vector<int> bytes;
        for (std::size_t i = 0; i < size; ++i) {
            const auto found = m_memory.find(address + i);
            bytes.push_back(found == m_memory.end() ? 0 : static_cast<int>(found->second));
        }
        return bytes;
    }

    int reads = 0;
    int writes = 0;
    std::uint64_t lastWriteAddress = 0;
    std::size_t lastWriteSize = 0;
    std::function<void()> onAccess;  ///< called by every access, if set
    std::optional<VxResult> failure; ///< what every access returns, if set
    std::optional<VxResult> closed;  ///< why there is no camera any more, if set

private:
    std::map<std::uint64_t, std::byte> m_memory;
};
