#pragma once

#include "VxDSSource/overlay/OverlayFrame.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <vector>

/// A frame between bytes that must not change.
///
/// Owner:  the test, by value.
/// Thread: the test's.
class GuardedFrame {
public:
    GuardedFrame(LONG width, LONG height, WORD bits)
        : m_size(static_cast<std::size_t>(width) * static_cast<std::size_t>(std::abs(height)) * bits / 8),
          m_memory(m_size + 2 * kGuard, kCanary)
    {
        for (std::size_t i = 0; i < m_size; ++i)
            m_memory[kGuard + i] = StaleByte(i);
        m_frame.memory = {m_memory.data() + kGuard, m_size};
        m_frame.header.biSize = sizeof(BITMAPINFOHEADER);
        m_frame.header.biWidth = width;
        m_frame.header.biHeight = height;
        m_frame.header.biPlanes = 1;
        m_frame.header.biBitCount = bits;
        m_frame.header.biSizeImage = static_cast<DWORD>(m_size);
    }
    ~GuardedFrame()
    {
        const auto isCanary = [](std::uint8_t each) { return each == kCanary; };
        EXPECT_TRUE(std::all_of(m_memory.begin(), m_memory.begin() + kGuard, isCanary)) << "before the frame";
        EXPECT_TRUE(std::all_of(m_memory.end() - kGuard, m_memory.end(), isCanary)) << "behind the frame";
    }
    GuardedFrame(const GuardedFrame&) = delete;
    GuardedFrame& operator=(const GuardedFrame&) = delete;

    static std::uint8_t StaleByte(std::size_t index) { return static_cast<std::uint8_t>(index % 251); }

    [[nodiscard]] std::vector<std::uint8_t> Bytes() const
    {
        return {m_frame.memory.begin(), m_frame.memory.end()};
    }
    [[nodiscard]] bool IsUntouched() const
    {
        for (std::size_t i = 0; i < m_size; ++i)
            if (m_frame.memory[i] != StaleByte(i))
                return false;
        return true;
    }

    [[nodiscard]] vxds::OverlayFrame& Frame() { return m_frame; }

private:
    static constexpr std::uint8_t kCanary = 0xA5;
    static constexpr std::ptrdiff_t kGuard = 4096;

    const std::size_t m_size;
    std::vector<std::uint8_t> m_memory;
    vxds::OverlayFrame m_frame;
};
