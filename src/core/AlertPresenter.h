#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace stowhaven {

// One question or report put to the user. Screens that answer alerts by their tag give
// each a fixed number; the others leave it 0.
struct Alert {
    enum class Field { None, Text, Secure };

    int tag = 0;
    std::string title;
    std::string message;
    std::vector<std::string> buttons;
    // At most one field: plain, or secure for a key, whose text is never shown.
    Field field = Field::None;
};

// How the user took an alert away: the button's index and, with a field, its text.
struct AlertAnswer {
    std::size_t buttonIndex = 0;
    std::optional<std::string> fieldText;
};

// Where alerts go: the screens, the terminal, or the log. Called on the main queue.
class AlertPresenter {
public:
    using Answered = std::function<void(const AlertAnswer& answer)>;
    // Called once the alert has gone, with the index of the button that took it away.
    using Dismissal = std::function<void(std::size_t buttonIndex)>;

    virtual ~AlertPresenter() = default;
    virtual void present(const Alert& alert, Answered onAnswer) = 0;
    // An alert without tag and field.
    void showAlert(const std::string& title, const std::string& message, const std::vector<std::string>& buttons,
                   Dismissal onDismissal);

    // The process's presenter. Until a front end installs its own, alerts are logged and,
    // with nobody to answer them, go at once by their first button.
    static std::shared_ptr<AlertPresenter> shared();
    // Nothing puts the logging presenter back.
    static void setShared(std::shared_ptr<AlertPresenter> presenter);
};

}  // namespace stowhaven
