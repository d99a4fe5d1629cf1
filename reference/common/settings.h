/// @file
/// What a host can set for the reference services, process-wide. Set it before the first connection; a service reads a
/// setting when it starts work, so a later change reaches only work that starts later.
///
/// Each setting that the host has not made comes from its environment variable, and failing that from its default.
/// Threads: every function may be called from any thread. Texts are UTF-8 and copied; one of more than 4095 bytes
/// throws std::length_error.
#ifndef REFERENCE_COMMON_SETTINGS_H
#define REFERENCE_COMMON_SETTINGS_H

#include <filesystem>
#include <string>

#include "reference/common/export.h"

/// What a host can set for the reference services.
namespace reference {

/// Where the session cache and the collector keep their files; made when missing. QV_REFERENCE_DATA_DIR; the default is
/// the user's local data directory.
REFERENCE_COMMON_API void SetDataDirectory(const std::filesystem::path& directory);
/// In force now.
REFERENCE_COMMON_API std::filesystem::path DataDirectory();

/// A PEM file of certificate authorities to trust, instead of the system's. QV_REFERENCE_CA_FILE; empty: the system's.
REFERENCE_COMMON_API void SetAuthorityFile(const std::filesystem::path& file);
/// In force now; empty: the system's.
REFERENCE_COMMON_API std::filesystem::path AuthorityFile();

/// "http://host:port" of an HTTP proxy, for HTTP and WebSocket alike. QV_REFERENCE_PROXY; empty: none.
REFERENCE_COMMON_API void SetProxy(const std::string& url);
/// In force now; empty: none.
REFERENCE_COMMON_API std::string Proxy();

/// "http(s)://host[:port][/path]" of an OpenTelemetry collector, without user, query and fragment: the collector posts
/// each connection to its /v1/traces. QV_REFERENCE_OTLP_ENDPOINT; empty: nothing is sent.
REFERENCE_COMMON_API void SetOtlpEndpoint(const std::string& url);
/// In force now; empty: nothing is sent.
REFERENCE_COMMON_API std::string OtlpEndpoint();

/// "name=value,name=value", values percent-encoded: headers for the OpenTelemetry collector, an access token for
/// example. Never logged. QV_REFERENCE_OTLP_HEADERS; empty: none.
REFERENCE_COMMON_API void SetOtlpHeaders(const std::string& headers);
/// In force now; empty: none.
REFERENCE_COMMON_API std::string OtlpHeaders();

}  // namespace reference

#endif
