// The character set that the operator's terminal speaks.
#pragma once

#include <clocale>

namespace VLK::host {

// As the environment says, UTF-8 where it says none. In force only for a thread
// that uses it: the rest of the agent stays in the C locale.
class BOperatorLocale {
public:
    // From construction to destruction, on one thread.
    class BUse {
    public:
        explicit BUse(const BOperatorLocale& locale) : m_before(uselocale(locale.m_locale)) {}
        ~BUse() { uselocale(m_before); }
        BUse(const BUse&) = delete;
        BUse& operator=(const BUse&) = delete;

    private:
        locale_t m_before;
    };

    BOperatorLocale();
    ~BOperatorLocale();
    BOperatorLocale(const BOperatorLocale&) = delete;
    BOperatorLocale& operator=(const BOperatorLocale&) = delete;

private:
    locale_t m_locale; // null: none is to be had, and nothing changes
};

} // namespace VLK::host
