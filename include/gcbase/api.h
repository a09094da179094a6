// Export marker of the GenICam base library. Exceptions cross module borders, so their type
// information must be one symbol for all modules.
#pragma once

#define GCBASE_API __attribute__((visibility("default")))
