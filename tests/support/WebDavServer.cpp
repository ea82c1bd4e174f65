#include "support/WebDavServer.h"

#include <grp.h>
#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <vector>

namespace stowhaven::test {

namespace {

constexpr const char* kApache = "/usr/sbin/apache2";
constexpr const char* kModules = "/usr/lib/apache2/modules/";
constexpr const char* kHtpasswd = "/usr/bin/htpasswd";
constexpr const char* kOpenssl = "/usr/bin/openssl";
constexpr const char* kPython = "/usr/bin/python3";
// Apache won't serve as root: its workers run as this account, which owns the share.
constexpr const char* kServerAccount = "www-data";
constexpr const char* kUser = "owner";
// A blank and quotes, as a user's password may hold them.
constexpr const char* kPassword = "open sesame's \"key\"";
// A port taken by another process between the pick and Apache's start costs a new try.
constexpr int kStartTries = 5;

std::string quoted(const std::filesystem::path& path) { return "\"" + path.string() + "\""; }

std::string apacheConfiguration(const std::filesystem::path& folder, const std::filesystem::path& share, int port,
                                bool https) {
    std::string modules;
    for (const char* module : {"mpm_event", "authn_core", "authn_file", "authz_core", "authz_user", "auth_basic",
                               "alias", "dav", "dav_fs", "socache_shmcb", "ssl"}) {
        if (std::string(module) == "ssl" && !https) continue;
        modules += std::string("LoadModule ") + module + "_module " + kModules + "mod_" + module + ".so\n";
    }
    std::string text = modules;
    text += "ServerName 127.0.0.1\n";
    text += "Listen 127.0.0.1:" + std::to_string(port) + "\n";
    text += "User " + std::string(kServerAccount) + "\nGroup " + kServerAccount + "\n";
    text += "PidFile " + quoted(folder / "httpd.pid") + "\n";
    text += "DefaultRuntimeDir " + quoted(folder / "run") + "\n";
    text += "ErrorLog " + quoted(folder / "error.log") + "\nLogLevel warn\n";
    text += "DavLockDB " + quoted(folder / "lock" / "DavLock") + "\n";
    text += "<Directory />\n    AllowOverride None\n    Require all denied\n</Directory>\n";
    text += std::string("Alias ") + WebDavServer::kSharePath + " " + quoted(share) + "\n";
    text += "<Directory " + quoted(share) + ">\n";
    text += "    Dav On\n    AuthType Basic\n    AuthName \"Stowhaven tests\"\n    AuthBasicProvider file\n";
    text += "    AuthUserFile " + quoted(folder / "htpasswd") + "\n    Require valid-user\n</Directory>\n";
    if (https) {
        text += "SSLEngine on\n";
        text += "SSLCertificateFile " + quoted(folder / "certificate.pem") + "\n";
        text += "SSLCertificateKeyFile " + quoted(folder / "key.pem") + "\n";
    }
    return text;
}

// Hands PATH to the server's account when the tests run as root (Apache then drops to it).
void giveToServer(const std::filesystem::path& path) {
    if (geteuid() != 0) return;
    const passwd* account = getpwnam(kServerAccount);
    const group* accountGroup = getgrnam(kServerAccount);
    if (account == nullptr || accountGroup == nullptr ||
        chown(path.c_str(), account->pw_uid, accountGroup->gr_gid) != 0)
        throw std::runtime_error(std::string("can't give the test share to ") + kServerAccount);
}

void run(const std::vector<std::string>& arguments) {
    if (!ServerProcess::succeeds(arguments))
        throw std::runtime_error(arguments.front() + " failed for the WebDAV server");
}

}  // namespace

bool WebDavServer::isAvailable() {
    static const bool available = [] {
        for (const std::string& file :
             {std::string(kApache), std::string(kModules) + "mod_dav_fs.so", std::string(kModules) + "mod_ssl.so",
              std::string(kHtpasswd), std::string(kOpenssl), std::string(kPython)}) {
            if (access(file.c_str(), R_OK) != 0) return false;
        }
        return getpwnam(kServerAccount) != nullptr;
    }();
    return available;
}

WebDavServer::WebDavServer(const WebDavServerOptions& options)
    : share_(ownFiles_.path() / "share"), https_(options.https) {
    std::filesystem::create_directories(share_);
    if (options.hostileReply || options.cutShort || options.redirectTo || options.readLimit > 0) {
        startStandIn(options);
    } else {
        startApache(options);
    }
}

WebDavServer::~WebDavServer() = default;

void WebDavServer::startApache(const WebDavServerOptions& options) {
    const auto& folder = ownFiles_.path();
    // The server's account reaches the share and the password file through the folder.
    std::filesystem::permissions(folder, std::filesystem::perms::owner_all | std::filesystem::perms::group_exec |
                                             std::filesystem::perms::others_exec);
    std::filesystem::create_directories(folder / "lock");
    std::filesystem::create_directories(folder / "run");
    giveToServer(share_);
    giveToServer(folder / "lock");
    run({kHtpasswd, "-c", "-b", "-m", (folder / "htpasswd").string(), kUser, kPassword});
    std::filesystem::permissions(folder / "htpasswd", std::filesystem::perms::others_read,
                                 std::filesystem::perm_options::add);
    if (options.https) {
        run({kOpenssl, "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-subj", "/CN=127.0.0.1", "-days", "1",
             "-keyout", (folder / "key.pem").string(), "-out", (folder / "certificate.pem").string()});
    }
    for (int attempt = 0; attempt < kStartTries; ++attempt) {
        port_ = freeLoopbackPort();
        const auto configuration = folder / "httpd.conf";
        std::ofstream(configuration, std::ios::trunc) << apacheConfiguration(folder, share_, port_, options.https);
        // One process (-X), which goes when the tests die; its threads serve many requests at once.
        process_ = std::make_unique<ServerProcess>(
            std::vector<std::string>{kApache, "-X", "-d", folder.string(), "-f", configuration.string()});
        if (process_->waitForPort(port_)) return;
        process_->stop();
    }
    std::ifstream log(folder / "error.log");
    const std::string logText((std::istreambuf_iterator<char>(log)), std::istreambuf_iterator<char>());
    throw std::runtime_error("the WebDAV server of the tests didn't start: " + logText);
}

void WebDavServer::startStandIn(const WebDavServerOptions& options) {
    const auto replyFile = ownFiles_.path() / "reply";
    std::ofstream(replyFile, std::ios::binary | std::ios::trunc) << options.hostileReply.value_or("");
    std::vector<std::string> arguments{kPython,
                                       "-B",
                                       STOWHAVEN_SOURCE_DIR "/tests/emulators/hostile_webdav.py",
                                       replyFile.string(),
                                       "--user",
                                       kUser,
                                       "--password",
                                       kPassword};
    if (options.cutShort) arguments.emplace_back("--cut-short");
    if (options.redirectTo) arguments.insert(arguments.end(), {"--redirect", *options.redirectTo});
    process_ = std::make_unique<ServerProcess>(arguments);
    const auto portLine = process_->waitForLine("port ");
    if (!process_->started() || !portLine) throw std::runtime_error("the hostile WebDAV server didn't start");
    port_ = std::atoi(portLine->c_str() + 5);
}

WebDavAccount WebDavServer::account() const {
    return {std::string(https_ ? "https" : "http") + "://127.0.0.1:" + std::to_string(port_), kUser, kPassword};
}

void WebDavServer::setHostileReply(const std::string& bytes) const {
    std::ofstream(replyFile(), std::ios::binary | std::ios::trunc) << bytes;
}

void WebDavServer::stop() { process_->stop(); }

}  // namespace stowhaven::test
