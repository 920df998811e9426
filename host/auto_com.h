#ifndef HOST_AUTO_COM_H
#define HOST_AUTO_COM_H

namespace h7 {

// The handle for counted host objects (`H7XML::INode`, `H7XML::INodeList`, `H7XML::IDocument`). It holds one reference.
//
// The rule of ownership:
//  - A handle owns exactly one reference, or is empty. It releases its reference when it is destroyed, reset, assigned to
//    or received into.
//  - A raw pointer that the host returns, as a result or in an out-argument, carries one reference. Constructing a handle
//    from it, or `Receive()`, takes over that reference without adding one.
//  - A raw pointer or reference that is passed as an argument is borrowed for the length of the call. A callee that wants to
//    keep the object adds a reference of its own.
//  - Copying a handle adds a reference; moving a handle does not.
//
// `T` offers `void AddRef() const` and `void Release() const`. Neither throws. A handle is not synchronised: only one thread
// at a time may use it, like everything that the host passes to a driver.
template <class T>
class auto_com {
 public:
  auto_com() noexcept : m_object(nullptr) {}

  // Takes over the reference that `object` carries. Null makes an empty handle.
  explicit auto_com(T* object) noexcept : m_object(object) {}

  auto_com(const auto_com& other) noexcept : m_object(other.m_object) {
    if (m_object != nullptr) {
      m_object->AddRef();
    }
  }

  auto_com(auto_com&& other) noexcept : m_object(other.Detach()) {}

  ~auto_com() { Reset(); }

  auto_com& operator=(const auto_com& other) noexcept {
    auto_com copy(other);
    Swap(copy);
    return *this;
  }

  auto_com& operator=(auto_com&& other) noexcept {
    auto_com taken(static_cast<auto_com&&>(other));
    Swap(taken);
    return *this;
  }

  // Returns the object, borrowed from this handle; null when the handle is empty.
  T* Get() const noexcept { return m_object; }
  T* operator->() const noexcept { return m_object; }
  T& operator*() const noexcept { return *m_object; }
  explicit operator bool() const noexcept { return m_object != nullptr; }

  // Releases the reference, if there is one, and leaves the handle empty.
  void Reset() noexcept {
    T* const object = Detach();
    if (object != nullptr) {
      object->Release();
    }
  }

  // Empties the handle and returns its reference, which the caller must release.
  T* Detach() noexcept {
    T* const object = m_object;
    m_object = nullptr;
    return object;
  }

  // For host functions with an out-argument: releases the reference, if there is one, and returns the place where the host
  // stores a pointer that carries one reference.
  T** Receive() noexcept {
    Reset();
    return &m_object;
  }

  void Swap(auto_com& other) noexcept {
    T* const object = m_object;
    m_object = other.m_object;
    other.m_object = object;
  }

 private:
  T* m_object;
};

}  // namespace h7

#endif
