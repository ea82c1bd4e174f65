#pragma once

#include "net/CurlHandle.h"
#include "net/FtpClient.h"
#include "net/ThreadedTransfer.h"

#include <cstdint>
#include <optional>
#include <string>

namespace stowhaven {

// The calls of an FTP client that move a file's bytes, each blocking on HANDLE; a transfer
// runs them on its own thread. Paths are checked by the caller.
namespace FtpTransfers {

// Stores the local file at REMOTEPATH; it counts only when the server then gives the size of
// the local file for it, so that a server that went away in the middle can't pass.
TransferOutcome upload(CurlHandle& handle, const FtpAccount& account, const std::string& localPath,
                       const std::string& remotePath, TransferProgress& progress);
// Writes the server's file to LOCALPATH (never through a symbolic link there); a download
// that fails leaves no file at LOCALPATH.
TransferOutcome download(CurlHandle& handle, const FtpAccount& account, const std::string& remotePath,
                         const std::string& localPath, TransferProgress& progress);
// The size the server gives for the file at PATH (SIZE), or nothing with ERROR.
std::optional<std::int64_t> remoteSize(CurlHandle& handle, const FtpAccount& account, const std::string& path,
                                       std::string& error);

}  // namespace FtpTransfers

}  // namespace stowhaven
