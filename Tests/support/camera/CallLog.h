#pragma once

#include "VxBase/VxMutex.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

/// How a call on the camera surface counts in tests.
enum class CallKind {
    Action,  ///< changes something
    Query,   ///< asks
    Picture, ///< describes or converts a picture
};

/// Every call on the camera surface, in order.
///
/// Owner:  CameraDouble.
/// Thread: any.
class CallLog {
public:
    std::function<void(const std::string& call)>
        onCall; ///< called on the caller's thread, after it is recorded

    void Add(CallKind kind, std::string text)
    {
        if (!onCall) {
            Record(kind, std::move(text));
            return;
        }
        Record(kind, text);
        onCall(text);
    }

    /// Room for so many calls: recording that many allocates nothing for the list.
    void Reserve(std::size_t calls)
    {
        const VxLock lock(m_mutex);
        m_calls.reserve(calls);
    }

    [[nodiscard]] std::vector<std::string> Of(CallKind kind) const
    {
        const VxLock lock(m_mutex);
        std::vector<std::string> texts;
        for (const Call& call : m_calls)
            if (call.kind == kind)
                texts.push_back(call.text);
        return texts;
    }

    /// Of every kind.
    [[nodiscard]] std::vector<std::string> All() const
    {
        const VxLock lock(m_mutex);
        std::vector<std::string> texts;
        for (const Call& call : m_calls)
            texts.push_back(call.text);
        return texts;
    }

    void Clear()
    {
        const VxLock lock(m_mutex);
        m_calls.clear();
    }

private:
    struct Call {
        CallKind kind;
        std::string text;
    };

    void Record(CallKind kind, std::string text)
    {
        const VxLock lock(m_mutex);
        m_calls.push_back({kind, std::move(text)});
    }

    mutable VxMutex m_mutex;
    std::vector<Call> m_calls VX_GUARDED_BY(m_mutex);
};
