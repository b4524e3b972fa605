// What keeps the agent from serving: one line for the operator and the exit
// status that goes with it.
#pragma once

#include "host/OneLine.h"

#include <stdexcept>
#include <string>

namespace VLK::host {

enum EExitStatus { eExitDone = 0, eExitStore = 1, eExitUsage = 2 };

class BHostError : public std::runtime_error {
public:
    BHostError(EExitStatus status, const std::string& line)
        // What it quotes may be anything.
        : std::runtime_error(OnOneLine(line)), m_status(status)
    {
    }
    EExitStatus Status() const { return m_status; }

private:
    EExitStatus m_status;
};

} // namespace VLK::host
