#pragma once

#include <QString>

class QWidget;

namespace corvalog {

// The dynamic property that names a widget's topic in the user manual (an anchor of
// docs/manual.html). F1 opens the manual at the topic of the focused widget, or of its nearest
// ancestor that has one.
inline constexpr const char *kHelpTopicProperty = "helpTopic";
// The topic of the manual's first page.
inline constexpr const char *kHelpContents = "contents";

// The topic for a widget: its own or its nearest ancestor's, else the contents.
QString helpTopicOf(const QWidget *widget);

// Presses F1 on the focused widget, as a dialog's Help button does: the manual opens at the
// topic of the control the user was working in.
void sendHelpKey();

} // namespace corvalog
