#pragma once

#include <unknwn.h>

#include <utility>

namespace vxgrab {

/// Counted reference to a COM object: the only place of this program where AddRef and Release are called.
///
/// Owner:  anybody, by value.
/// Thread: the pointer like any value; the object as its own apartment rules say.
template <typename T>
class ComPtr final {
public:
    ComPtr() = default;
    ComPtr(const ComPtr& other) : m_object(other.m_object)
    {
        if (m_object != nullptr)
            m_object->AddRef();
    }
    ComPtr(ComPtr&& other) noexcept : m_object(std::exchange(other.m_object, nullptr)) {}
    ComPtr& operator=(ComPtr other) noexcept
    {
        std::swap(m_object, other.m_object);
        return *this;
    }
    ~ComPtr() { Reset(); }

    /// Takes over a reference that the caller owns.
    [[nodiscard]] static ComPtr Adopt(T* object)
    {
        ComPtr result;
        result.m_object = object;
        return result;
    }

    /// Adds a reference to an object that somebody else owns.
    [[nodiscard]] static ComPtr Share(T* object)
    {
        if (object != nullptr)
            object->AddRef();
        return Adopt(object);
    }

    void Reset()
    {
        if (T* const object = std::exchange(m_object, nullptr); object != nullptr)
            object->Release();
    }

    [[nodiscard]] T* Get() const { return m_object; }
    T* operator->() const { return m_object; }
    explicit operator bool() const { return m_object != nullptr; }

    /// Place for a function that returns a counted object; what was held is released.
    [[nodiscard]] T** Put()
    {
        Reset();
        return &m_object;
    }

    /// The same for functions that return any interface by its identifier.
    [[nodiscard]] void** PutVoid() { return reinterpret_cast<void**>(Put()); }

    /// Asks the object for another of its interfaces.
    /// @return  the object's own answer; E_POINTER when nothing is held
    template <typename U>
    [[nodiscard]] HRESULT Query(REFIID interfaceId, ComPtr<U>& other) const
    {
        return m_object != nullptr ? m_object->QueryInterface(interfaceId, other.PutVoid()) : E_POINTER;
    }

private:
    T* m_object = nullptr;
};

} // namespace vxgrab
