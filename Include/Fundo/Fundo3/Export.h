#pragma once

/// Marks what libFundo exports; every other symbol of the library is hidden.
#define FUNDO_API __attribute__((visibility("default")))
