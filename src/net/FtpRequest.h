#pragma once

#include "net/CurlHandle.h"
#include "net/FtpClient.h"

#include <optional>
#include <string>

namespace stowhaven {

// What every call to an FTP server shares, on a CurlHandle of that server.
namespace FtpRequest {

// Starts a call to URL as the account's user: passive mode (EPSV, then PASV) or active,
// binary type, whole paths in the commands (no CWD), and no wait without end for a reply.
void prepare(CurlHandle& handle, const FtpAccount& account, const std::string& url);
// The server's last reply of the call when it was a refusal (4xx, 5xx), one printable line.
std::optional<std::string> refusal(const CurlHandle& handle);
// What a failed call tells: the server's reply when its last one was a refusal (4xx, 5xx),
// else curl's own text; one printable line without the password.
std::string failure(const CurlHandle& handle, CURLcode code);

}  // namespace FtpRequest

}  // namespace stowhaven
