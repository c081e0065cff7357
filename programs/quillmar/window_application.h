#pragma once

#include <QGuiApplication>
#include <memory>

namespace quillmar {

// Creates the application of a process with a window. If no window can be shown, the process ends with a
// sentence and status 1; Qt would abort.
std::unique_ptr<QGuiApplication> makeWindowApplication(int& count, char** arguments);

}  // namespace quillmar
