// SPDX-License-Identifier: MIT
// The platform's entry point for publishing its properties.
#ifndef PADKIT_PLATFORM_H
#define PADKIT_PLATFORM_H

#include <string>

class property;

// Creates the groups and registers every property of the platform.
void platform_register_properties();

// Registers the one property of that name and returns it; nullptr when the
// platform has none of that name or it is registered already.
property* platform_register_property(const std::string& name);

#endif
