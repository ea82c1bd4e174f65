#pragma once

namespace stowhaven::SugarSyncKeys {

// The settings of the SugarSync login: the user's own login and password, as entered, and
// when the token bought with them ends.
constexpr const char* kLogin = "SUGARSYNC_LOGIN";
constexpr const char* kPassword = "SUGARSYNC_PASSWORD";
constexpr const char* kTokenExpirationDate = "SUGARSYNC_TOKEN_EXPIRATION_DATE";

}  // namespace stowhaven::SugarSyncKeys
