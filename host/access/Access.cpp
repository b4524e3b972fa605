#include "host/access/Access.h"

namespace VLK::host {

BAccess::BAccess(const SConfiguration& configuration, BStore* store)
    : m_communities(configuration.communities), m_views(store, kViewSection),
      m_vacm(configuration.groups, configuration.contexts, m_views)
{
    bool isAsConfigured = LoadViews(m_views, store, configuration.views);
    if (!isAsConfigured && !configuration.file.empty())
        LogLine("views are as managers have set them, not as in " + configuration.file +
                "; --reset-store returns to the file");
}

} // namespace VLK::host
