// Tells whether saving to the store has been failing.
#pragma once

namespace VLK::host {

class IWriteFailures {
public:
    virtual ~IWriteFailures() = default;
    // How many updates failed so far.
    virtual unsigned FailedUpdates() const = 0;
};

} // namespace VLK::host
