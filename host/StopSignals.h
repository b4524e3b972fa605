// SIGINT and SIGTERM as a descriptor that becomes readable.
#pragma once

namespace VLK::host {

// Blocks both signals for the calling thread, and so for those it starts;
// ignores SIGPIPE and SIGXFSZ.
class BStopSignals {
public:
    // Throws BHostError.
    BStopSignals();
    ~BStopSignals();
    BStopSignals(const BStopSignals&) = delete;
    BStopSignals& operator=(const BStopSignals&) = delete;

    int Descriptor() const { return m_descriptor; }

private:
    int m_descriptor;
};

} // namespace VLK::host
