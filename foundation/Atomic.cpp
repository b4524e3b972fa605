#include <vkmibh/base.h>

namespace VLK {

void AtomicInc(atomic_t* counter) { counter->value.fetch_add(1); }

void AtomicAssign(atomic_t* counter, int value) { counter->value.store(value); }

unsigned ui32AtomicRead(atomic_t* counter) { return unsigned(counter->value.load()); }

} // namespace VLK
