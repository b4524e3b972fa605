// Numbers the transactions of the process.
#include <vkmibh/transactions.h>

#include <mutex>
#include <new>

namespace VLK {

namespace {
std::mutex g_creation;
}

std::atomic<BTransactionIdGenerator*> BTransactionIdGenerator::s_pInstance{nullptr};

BTransactionIdGenerator::BTransactionIdGenerator(unsigned int last)
{
    AtomicAssign(&m_counter, static_cast<int>(last));
}

BTransactionIdGenerator::~BTransactionIdGenerator() = default;

void BTransactionIdGenerator::Destroy() { DestroyInstance(); }

BTransactionIdGenerator* BTransactionIdGenerator::GetInstance()
{
    BTransactionIdGenerator* instance = s_pInstance.load(std::memory_order_acquire);
    if (instance)
        return instance;
    std::lock_guard<std::mutex> guard(g_creation);
    instance = s_pInstance.load(std::memory_order_relaxed);
    if (!instance) {
        instance = new (std::nothrow) BTransactionIdGenerator;
        s_pInstance.store(instance, std::memory_order_release);
    }
    return instance;
}

void BTransactionIdGenerator::DestroyInstance()
{
    delete s_pInstance.exchange(nullptr, std::memory_order_acq_rel);
}

unsigned int BTransactionIdGenerator::NextId()
{
    unsigned int id = 0;
    // 0 means "no transaction", so the counter steps over it when it wraps.
    while (id == 0) {
        AtomicInc(&m_counter);
        id = ui32AtomicRead(&m_counter);
    }
    return id;
}

} // namespace VLK
