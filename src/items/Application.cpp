#include "items/Application.h"

namespace stowhaven {

namespace {

constexpr double kBytesPerMegabyte = 1048576.0;

}  // namespace

Application::Application(std::string name) : SelectableItem(std::move(name)) {}

double Application::totalSize() const { return totalBytes_ / kBytesPerMegabyte; }

}  // namespace stowhaven
