#ifndef HOST_HOST_API_H
#define HOST_HOST_API_H

// Marks what crosses the border between the driver host and a driver module.
//
// A driver module is compiled with hidden visibility and exports only its factory. What the host declares keeps default
// visibility, so that the module's references to it are resolved when the host loads the module.
#define H7_HOST_API __attribute__((visibility("default")))

#endif
