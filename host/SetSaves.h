// One SET, one save: all of what it changed is kept, or nothing.
#pragma once

namespace VLK::host {

class ISetSaves {
public:
    virtual ~ISetSaves() = default;
    // From here on, what the calling thread asks to be saved waits.
    virtual void Hold() = 0;
    // Saves what has waited; false when it was not kept.
    virtual bool SaveHeld() = 0;
};

} // namespace VLK::host
