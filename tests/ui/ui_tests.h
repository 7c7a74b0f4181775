// The desktop test classes, each registered by its file.
#pragma once

#include <QObject>
#include <functional>
#include <memory>
#include <vector>

namespace marigold::testing {

using UiTestMaker = std::function<std::unique_ptr<QObject>()>;
std::vector<UiTestMaker>& UiTestClasses();

template <typename Tests>
struct RegisterUiTests {
  RegisterUiTests() { UiTestClasses().push_back([] { return std::make_unique<Tests>(); }); }
};

}  // namespace marigold::testing
