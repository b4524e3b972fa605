#include <vkmibh/console.h>

namespace VLK {

ICmdStream::~ICmdStream() = default;

} // namespace VLK
