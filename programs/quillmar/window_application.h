#pragma once

#include <QGuiApplication>
#include <memory>

namespace quillmar {

// The application of a process with a window. Where no window can be shown the process ends with a sentence
// and status 1; Qt by itself would abort it.
std::unique_ptr<QGuiApplication> makeWindowApplication(int& count, char** arguments);

}  // namespace quillmar
