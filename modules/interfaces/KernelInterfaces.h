// The interfaces of the network namespace that the process is in.
#pragma once

#include "modules/interfaces/Interface.h"

namespace VLK::modules {

// Asks the kernel by rtnetlink, and for the speed by the ioctl of ethtool, which
// tells the figure of /sys/class/net/NAME/speed, but of the process's own namespace.
//
// Ownership: none.
// Threads:   any, several at once.
// Errors:    as IInterfaces. A list that changed while it was told is asked for
//            again, and given up with EINTR when it never stays as it is.
class CKernelInterfaces : public IInterfaces {
public:
    std::vector<SInterface> Read() override;
};

} // namespace VLK::modules
