#include "NumberLocale.h"

namespace corvalog {

namespace {
NumberLocale g_locale;
}

const NumberLocale &numberLocale()
{
    return g_locale;
}

void setNumberLocale(const NumberLocale &locale)
{
    g_locale = locale;
}

ScopedNumberLocale::ScopedNumberLocale(const NumberLocale &locale)
    : m_previous(g_locale)
{
    g_locale = locale;
}

ScopedNumberLocale::~ScopedNumberLocale()
{
    g_locale = m_previous;
}

} // namespace corvalog
