#pragma once

#include <unknwn.h>

#include <utility>

/// Holds one reference to a COM object.
///
/// Owner:  anybody, by value.
/// Thread: like a plain pointer.
template <typename Interface>
class VxComPtr final {
public:
    VxComPtr() = default;
    /// Takes a reference of its own.
    explicit VxComPtr(Interface* object) : m_object(object)
    {
        if (m_object != nullptr)
            m_object->AddRef();
    }
    VxComPtr(const VxComPtr& other) : VxComPtr(other.m_object) {}
    VxComPtr(VxComPtr&& other) noexcept : m_object(std::exchange(other.m_object, nullptr)) {}
    ~VxComPtr() { Reset(); }
    VxComPtr& operator=(VxComPtr other) noexcept
    {
        std::swap(m_object, other.m_object);
        return *this;
    }

    /// @param object  whose reference is taken over
    [[nodiscard]] static VxComPtr Adopt(Interface* object)
    {
        VxComPtr owner;
        owner.m_object = object;
        return owner;
    }

    [[nodiscard]] Interface* Get() const { return m_object; }
    Interface* operator->() const { return m_object; }
    explicit operator bool() const { return m_object != nullptr; }

    /// Lets go of the object; may end it.
    void Reset()
    {
        if (Interface* const object = std::exchange(m_object, nullptr))
            object->Release();
    }

    /// Gives the reference to the caller.
    [[nodiscard]] Interface* Detach() { return std::exchange(m_object, nullptr); }

    /// For functions that return a new reference: lets go of the present object first.
    [[nodiscard]] Interface** Put()
    {
        Reset();
        return &m_object;
    }
    [[nodiscard]] void** PutVoid() { return reinterpret_cast<void**>(Put()); }

    /// Asks the object for another interface; null when it has none, or when there is no object.
    /// @param iid  to be given for interfaces that the compiler's headers declare without their identifier
    template <typename Other>
    [[nodiscard]] VxComPtr<Other> As(REFIID iid) const
    {
        VxComPtr<Other> other;
        if (m_object != nullptr && FAILED(m_object->QueryInterface(iid, other.PutVoid())))
            return {};
        return other;
    }
    template <typename Other>
    [[nodiscard]] VxComPtr<Other> As() const
    {
        return As<Other>(__uuidof(Other));
    }

private:
    Interface* m_object = nullptr;
};
