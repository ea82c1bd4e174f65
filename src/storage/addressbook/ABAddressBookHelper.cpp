#include "storage/addressbook/ABAddressBookHelper.h"

#include "core/Supervisor.h"
#include "platform/DeviceRoot.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "platform/ShellQuote.h"
#include "platform/plist/PlistCodec.h"

#include <fmt/format.h>

namespace stowhaven {

namespace {

std::mutex gHelperMutex;
std::shared_ptr<ABAddressBookHelper> gABAddressBookHelper;

// The contacts group on display, and the accounts it may belong to.
constexpr const char* kPeoplePickerSettings = "/mobile/Library/Preferences/com.apple.PeoplePicker.plist";
constexpr const char* kAccountSettings = "/mobile/Library/Preferences/com.apple.accountsettings.plist";

const PlistValue* entryOf(const PlistValue& container, std::string_view key) {
    const auto* dictionary = container.asDictionary();
    if (!dictionary) return nullptr;
    const auto found = dictionary->find(key);
    return found == dictionary->end() ? nullptr : &found->second;
}

std::optional<std::string> stringOf(const PlistValue* value) {
    const std::string* text = value ? value->asString() : nullptr;
    return text ? std::optional(*text) : std::nullopt;
}

bool syncsContacts(const PlistValue& account) {
    if (stringOf(entryOf(account, "Type")) != "Exchange") return false;
    const PlistValue* classes = entryOf(account, "Enabled Dataclasses");
    const auto* list = classes ? classes->asArray() : nullptr;
    if (!list) return false;
    for (const PlistValue& dataClass : *list) {
        if (stringOf(&dataClass) == "com.apple.Dataclass.Contacts") return true;
    }
    return false;
}

}  // namespace

std::string ABAddressBookHelper::firstNameOfDevice(const std::string& deviceUID) {
    return fmt::format("{}_{}", kGenericFirstName, deviceUID);
}

std::shared_ptr<ABAddressBookHelper> ABAddressBookHelper::createABAddressBookHelper() {
    createSymlink();
    auto helper = std::make_shared<ABAddressBookHelper>();
    {
        std::lock_guard lock(gHelperMutex);
        gABAddressBookHelper = helper;
    }
    helper->reset();
    return helper;
}

std::shared_ptr<ABAddressBookHelper> ABAddressBookHelper::reopened() {
    auto helper = shared();
    if (!helper) return createABAddressBookHelper();
    helper->reset();
    return helper;
}

std::shared_ptr<ABAddressBookHelper> ABAddressBookHelper::shared() {
    std::lock_guard lock(gHelperMutex);
    return gABAddressBookHelper;
}

void ABAddressBookHelper::destroyShared() {
    std::lock_guard lock(gHelperMutex);
    gABAddressBookHelper.reset();
}

void ABAddressBookHelper::createSymlink() {
    const std::string link = ShellQuote::path(DeviceRoot::var() + "/root/Library/AddressBook");
    Supervisor::shared().systemExecute(fmt::format(
        "rm -rf {0}; ln -sf {1} {0}", link, ShellQuote::path(DeviceRoot::var() + "/mobile/Library/AddressBook")));
}

void ABAddressBookHelper::removeSymlink() {
    Supervisor::shared().systemExecute(
        fmt::format("rm -rf {}", ShellQuote::path(DeviceRoot::var() + "/root/Library/AddressBook")));
}

void ABAddressBookHelper::reset() {
    std::unique_lock lock(mutex_);
    valid_ = false;
    std::optional<std::string> message;
    ContactsAccess& access = Platform::current().contactsAccess();
    switch (access.authorizationStatus()) {
        case ContactsAuthorization::NotDetermined:
            lock.unlock();
            access.requestAccess([weakSelf = weak_from_this()](bool granted) {
                const auto self = weakSelf.lock();
                if (!self) return;
                std::lock_guard answered(self->mutex_);
                if (!granted) {
                    SH_LOG("Addressbook access denied!");
                    self->addressBookRef_.reset();
                    return;
                }
                SH_LOG("Addressbook access granted!");
                self->openBook();
            });
            lock.lock();
            // The owner's no, when it comes at once, is the message of this start.
            if (!addressBookRef_) message = "The user has denied access to it.";
            break;
        case ContactsAuthorization::Restricted:
            message = "The user has restricted access to it.";
            break;
        case ContactsAuthorization::Denied:
            message = "The user has denied access to it. Try enabling it from Settings>Privacy>Contacts.";
            break;
        case ContactsAuthorization::Authorized:
            SH_LOG("Addressbook access authorized!");
            openBook();
            break;
    }
    if (!valid_ && message) {
        Supervisor& supervisor = Supervisor::shared();
        if (supervisor.isStorageAddressbook()) supervisor.setStorageToLocal();
        Supervisor::showAlert("Contacts Access Error", *message + " Using local storage now.");
    }
    if (addressBookRef_) {
        SH_LOG("ABAddressBookHelper created!");
    } else {
        SH_LOG("Failed to create ABAddressBookHelper!");
    }
}

void ABAddressBookHelper::openBook() {
    std::string error;
    addressBookRef_ = AddressBook::createWithOptions(&error);
    if (!addressBookRef_) SH_LOG("Couldn't open the address book. Error: {}", error);
    valid_ = addressBookRef_ != nullptr;
}

bool ABAddressBookHelper::isValid() const {
    std::lock_guard lock(mutex_);
    return valid_;
}

bool ABAddressBookHelper::isActiveSyncEnabled() const {
    const std::string var = DeviceRoot::var();
    const auto picker = PlistCodec::readFile(var + kPeoplePickerSettings);
    const PlistValue* group = picker ? entryOf(*picker, "displayedGroupRepresentation") : nullptr;
    const auto identifier = group ? stringOf(entryOf(*group, "AccountIdentifier")) : std::nullopt;
    if (!identifier) return false;
    const auto settings = PlistCodec::readFile(var + kAccountSettings);
    const PlistValue* accounts = settings ? entryOf(*settings, "Accounts") : nullptr;
    const auto* list = accounts ? accounts->asArray() : nullptr;
    if (!list) return false;
    for (const PlistValue& account : *list) {
        if (stringOf(entryOf(account, "Identifier")) == identifier) return syncsContacts(account);
    }
    return false;
}

}  // namespace stowhaven
