#include "host/OperatorLocale.h"

#include <cstring>
#include <langinfo.h>

namespace VLK::host {

BOperatorLocale::BOperatorLocale() : m_locale(newlocale(LC_CTYPE_MASK, "", nullptr))
{
    if (m_locale && std::strcmp(nl_langinfo_l(CODESET, m_locale), "ANSI_X3.4-1968") != 0)
        return;
    if (m_locale)
        freelocale(m_locale);
    m_locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
}

BOperatorLocale::~BOperatorLocale()
{
    if (m_locale)
        freelocale(m_locale);
}

} // namespace VLK::host
