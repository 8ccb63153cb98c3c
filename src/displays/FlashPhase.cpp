#include "FlashPhase.h"

#include "runtime/Val.h"

namespace corvalog {

bool FlashPhase::isOn() const
{
    return Val(m_caption.toStdString()) != 0.0;
}

void FlashPhase::toggle()
{
    setCaption(isOn() ? QStringLiteral("0") : QStringLiteral("1"));
}

} // namespace corvalog
