// Preloaded into a server: counts what it syncs, in the file that VKWIRE_SYNCS names.
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace {

std::atomic<uint64_t>& Counter()
{
    static auto* const counter = [] {
        const char* name = std::getenv("VKWIRE_SYNCS");
        const int file = name ? open(name, O_RDWR | O_CLOEXEC) : -1;
        // Without a file it fails, as is seen below.
        // cppcheck-suppress invalidFunctionArg
        void* memory = mmap(nullptr, sizeof(uint64_t), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
        if (memory == MAP_FAILED)
            std::abort();
        return static_cast<std::atomic<uint64_t>*>(memory);
    }();
    return *counter;
}

template <class TFunction>
TFunction* Real(const char* name)
{
    ++Counter();
    return reinterpret_cast<TFunction*>(dlsym(RTLD_NEXT, name));
}

} // namespace

extern "C" {

__attribute__((visibility("default"))) int fsync(int file) { return Real<int(int)>("fsync")(file); }

__attribute__((visibility("default"))) int fdatasync(int file)
{
    return Real<int(int)>("fdatasync")(file);
}

__attribute__((visibility("default"))) void sync() { Real<void()>("sync")(); }

__attribute__((visibility("default"))) int msync(void* start, size_t length, int flags)
{
    return Real<int(void*, size_t, int)>("msync")(start, length, flags);
}
}
