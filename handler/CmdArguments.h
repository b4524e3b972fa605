// The arguments of the handler's console commands, and the request they make.
#pragma once

#include <vkmibh/containers.h>
#include <vkmibh/varbind.h>

namespace VLK {

// What is wrong with the arguments of a command.
enum ECmdError {
    eCmdNoError = 0,
    eCmdArgumentsRequired = -3,
    eCmdInvalidArguments = -4,
    eCmdInvalidOid = -5,
    eCmdInvalidIpAddress = -6,
    eCmdInvalidTag = -7,
    eCmdNoMemory = -100 // has no message of its own
};

// Goes through the arguments that are no switches.
class PlainArguments {
public:
    explicit PlainArguments(const BStringArray& args) : m_args(args) {}

    int Count() const;
    // Null behind the last one.
    const BString* Next();
    // Of the one that Next() gave, counted from 0.
    int Position() const { return m_position; }

private:
    const BStringArray& m_args;
    int m_next = 0;
    int m_position = -1;
};

// The one at a position, null when there is none.
const BString* PlainArgumentAt(const BStringArray& args, int position);

// The address in the first switch 'a'; 0.0.0.0 without one, or when it is none.
ECmdError LocalAddressOf(const BStringArray& args, BIpAddress& address);

// One binding per identifier, without a value. On failure `position` is that of
// the plain argument at fault.
ECmdError NamesToList(const BStringArray& args, BVarBindList& list, int& position);

// One binding per identifier, tag and value.
ECmdError TriplesToList(const BStringArray& args, BVarBindList& list, int& position);

} // namespace VLK
