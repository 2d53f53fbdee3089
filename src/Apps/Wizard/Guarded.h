// The one way in which Qt calls what may fail.
#pragma once

#include <QWidget>
#include <functional>

namespace vorlent::wizard {

// Runs a step of a slot or an event handler, which nothing may leave as an exception: Qt carries none. What
// fails is told in a message box over the window, null for the one at work, and the application goes on.
// False if something failed.
bool Guarded(QWidget* window, const std::function<void()>& step);

// The same in two parts: the failure of a step as a text for the user, "" if there was none; and its telling.
QString FailureOf(const std::function<void()>& step);
void TellFailure(QWidget* window, const QString& failure);

}  // namespace vorlent::wizard
