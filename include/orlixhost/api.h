// Export marker of the host library.
#pragma once

#define ORLIXHOST_API __attribute__((visibility("default")))
