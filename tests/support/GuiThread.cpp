#include "GuiThread.h"

#include <QTimer>

namespace corvalog {

GuiThread::GuiThread()
    : m_app(m_argc, m_argv)
{
}

bool GuiThread::runUntil(const std::function<bool()> &done, std::chrono::milliseconds limit)
{
    QTimer wakeUp; // returns control even while nothing arrives
    wakeUp.start(5);
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!done() && std::chrono::steady_clock::now() < end)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return done();
}

} // namespace corvalog
