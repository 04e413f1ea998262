#pragma once

#include <QString>

class QWidget;

// The texts the window shows of its own accord: the welcome at the first start, the warning
// about preferences it cannot write, the About text, and the achievement of a milestone of rows
// transformed.
namespace WindowPrompts {

// Shown once after the window first appears.
void showStartMessages(QWidget *parent);
QString aboutText();
QString notAvailableText(const QString &what);
// The tip for a power of ten of rows newly passed, at most once for each; empty when none is
// due. Taking it records that it was shown.
QString takeAchievement();

} // namespace WindowPrompts
