#pragma once

#include <cstdint>

#include "Fundo/Fundo3/Export.h"

namespace Tovra::Component {

/// A server and a way of logging in to it. A plain record: it owns none of its texts, a null text counts as
/// empty, and `ServerInfo info = {}` is all zero. Fields marked "identity" tell one client from another.
struct FUNDO_API ServerInfo {
    const char* address;   ///< network address; identity
    int32_t port;          ///< network port; identity
    const char* userName;  ///< name to log in with; identity
    const char* password;  ///< password to log in with; identity
    const char* text1;     ///< the application's; identity
    uint8_t flag1;         ///< the application's; identity
    uint8_t flag2;         ///< the application's; identity
    const char* text2;     ///< the application's; identity
    const char* text3;     ///< the application's; identity
    const char* text4;     ///< the application's; identity
    const char* text5;     ///< the application's
    int64_t value1;        ///< the application's; identity
    const char* text6;     ///< the application's; identity
    uint8_t flag3;         ///< the application's; identity
    uint8_t flag4 : 1;     ///< the application's, one bit in a byte of its own; identity
    int32_t value2;        ///< the application's; identity
    int32_t value3;        ///< the application's
    const char* text7;     ///< the application's; identity
    const char* text8;     ///< the application's; identity
    const char* text9;     ///< the application's

    /// All zero. A request made with this very object involves no server; a copy of it does.
    static const ServerInfo none;
};

}  // namespace Tovra::Component
