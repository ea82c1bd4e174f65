#include "core/SessionHistory.h"

#include "archive/HistoryText.h"
#include "core/AddressBookNote.h"
#include "core/ModelClasses.h"
#include "core/Supervisor.h"

namespace stowhaven {

namespace {

// The key under which a session keeps the whole of the SpringBoard's settings.
constexpr const char* kWholeSpringboardKey = "SPRINGBOARD";

std::shared_ptr<BackupSession> sessionOfOldNote(const std::string& note) {
    const auto contents = AddressBookNote::expandOldFormat(note);
    if (!contents) return nullptr;
    auto session = std::make_shared<BackupSession>();
    session->setRawData(contents->rawData);
    session->setSessionDate(contents->sessionDate);
    session->setSpringBoardData(BackupSession::FileData{{kWholeSpringboardKey, contents->springboard}});
    session->setVersion(Supervisor::shared().version());
    return session;
}

}  // namespace

SessionHistory::Sessions SessionHistory::sessionsOf(const ArchiveValue& root) {
    if (auto session = root.object<BackupSession>()) return {session};
    Sessions sessions;
    if (const auto* elements = root.asArray()) {
        for (const ArchiveValue& element : *elements) {
            if (auto session = element.object<BackupSession>()) sessions.push_back(std::move(session));
        }
    }
    return sessions;
}

SessionHistory::Sessions SessionHistory::fromNote(const std::string& note) {
    if (AddressBookNote::isOldFormat(note)) {
        auto session = sessionOfOldNote(note);
        return session ? Sessions{session} : Sessions{};
    }
    const auto text = AddressBookNote::historyText(note);
    if (!text) return {};
    const auto root = HistoryText::decode(*text, modelClasses());
    return root ? noteSessionsOf(*root) : Sessions{};
}

SessionHistory::Sessions SessionHistory::noteSessionsOf(const ArchiveValue& root) {
    Sessions sessions = sessionsOf(root);
    for (const auto& session : sessions) {
        if (session->version()) continue;
        session->setVersion(Supervisor::shared().version());
        if (session->springBoardData()) {
            session->setSpringBoardData(
                BackupSession::FileData{{kWholeSpringboardKey, PlistValue(*session->springBoardData())}});
        }
    }
    return sessions;
}

}  // namespace stowhaven
