// An object for a function-local static: made at first use, never destroyed,
// so that nothing that runs late in the process finds it gone.
//
//   static Immortal<TMutex> s_lock(true);
//   TMutexLock lock(s_lock.Get());
#pragma once

#include <new>
#include <utility>

namespace VLK {

template <class T>
class Immortal {
public:
    template <class... Args>
    explicit Immortal(Args&&... args)
    {
        ::new (static_cast<void*>(m_storage)) T(std::forward<Args>(args)...);
    }
    Immortal(const Immortal&) = delete;
    Immortal& operator=(const Immortal&) = delete;
    T& Get() { return *std::launder(reinterpret_cast<T*>(m_storage)); }

private:
    alignas(T) unsigned char m_storage[sizeof(T)];
};

} // namespace VLK
