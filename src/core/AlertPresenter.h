#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace stowhaven {

// Where alerts go: the screens, the terminal, or the log. Called on the main queue.
class AlertPresenter {
public:
    // Called once the alert has gone, with the index of the button that took it away.
    using Dismissal = std::function<void(std::size_t buttonIndex)>;

    virtual ~AlertPresenter() = default;
    virtual void showAlert(const std::string& title, const std::string& message,
                           const std::vector<std::string>& buttons, Dismissal onDismissal) = 0;

    // The process's presenter. Until a front end installs its own, alerts are logged and,
    // with nobody to answer them, go at once by their first button.
    static std::shared_ptr<AlertPresenter> shared();
    // Nothing puts the logging presenter back.
    static void setShared(std::shared_ptr<AlertPresenter> presenter);
};

}  // namespace stowhaven
