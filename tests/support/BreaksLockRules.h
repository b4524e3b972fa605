// For tests that take locks in ways that clang's analysis rightly objects to,
// because the lock's answer to them is what they test.
#pragma once

#if defined(__clang__)
#pragma clang diagnostic ignored "-Wthread-safety-analysis"
#endif
