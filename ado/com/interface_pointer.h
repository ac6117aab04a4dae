#pragma once

#include <ole2.h>

#include <utility>

namespace vantlo {

/// A counted reference to a COM interface.
template <typename Interface>
class InterfacePointer {
public:
    InterfacePointer() = default;
    explicit InterfacePointer(Interface* pointer) : pointer_(pointer) {
        if (pointer_ != nullptr) pointer_->AddRef();
    }
    InterfacePointer(const InterfacePointer& other) : InterfacePointer(other.pointer_) {}
    InterfacePointer(InterfacePointer&& other) noexcept : pointer_(std::exchange(other.pointer_, nullptr)) {}
    InterfacePointer& operator=(InterfacePointer other) noexcept {
        std::swap(pointer_, other.pointer_);
        return *this;
    }
    ~InterfacePointer() {
        if (pointer_ != nullptr) pointer_->Release();
    }

    [[nodiscard]] Interface* get() const { return pointer_; }
    Interface* operator->() const { return pointer_; }
    explicit operator bool() const { return pointer_ != nullptr; }

    /// Where a call puts the reference that it returns; the one held is released first.
    Interface** receive() {
        InterfacePointer().swap(*this);
        return &pointer_;
    }
    void** receive_any() { return reinterpret_cast<void**>(receive()); }

    void swap(InterfacePointer& other) noexcept { std::swap(pointer_, other.pointer_); }

private:
    Interface* pointer_ = nullptr;
};

/// An object's interface; none where the object refuses it, whatever it leaves behind then, or answers with nothing.
template <typename Interface>
InterfacePointer<Interface> interface_of(IUnknown& object, REFIID identifier) {
    void* answered = nullptr;
    const HRESULT result = object.QueryInterface(identifier, &answered);
    InterfacePointer<Interface> found;
    if (SUCCEEDED(result)) *found.receive() = static_cast<Interface*>(answered);
    return found;
}

}  // namespace vantlo
