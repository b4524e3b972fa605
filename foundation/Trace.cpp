// Alone in its file: a program that links the archive may bring its own hook.
#include <vkmibh/base.h>

namespace VLK {

void VKDbgModuleTraceClass(int, const char*, ...) {}

} // namespace VLK
