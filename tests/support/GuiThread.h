#pragma once

#include <QCoreApplication>
#include <chrono>
#include <functional>

namespace corvalog {

// The application object of a test or benchmark, so providers have a GUI thread to deliver to.
class GuiThread
{
public:
    GuiThread();

    // Runs the thread's events until `done` holds or `limit` has passed; true when it held.
    bool runUntil(const std::function<bool()> &done, std::chrono::milliseconds limit);

private:
    int m_argc = 1;
    char m_name[5] = "test";
    char *m_argv[2] = { m_name, nullptr };
    QCoreApplication m_app;
};

} // namespace corvalog
