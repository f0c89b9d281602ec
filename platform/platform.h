// The platform's entry point for publishing its properties.
#ifndef PADKIT_PLATFORM_H
#define PADKIT_PLATFORM_H

// Creates the groups and registers every property of the platform.
void platform_register_properties();

#endif
