// Export marker of the parameter adapter. Ports are implemented in one module and called from
// another, so that their interfaces and tables must be one symbol for all modules.
#pragma once

#define ANYTHINGTONODEMAPADAPTER_API __attribute__((visibility("default")))
