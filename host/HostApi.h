#ifndef HOST_HOST_API_H
#define HOST_HOST_API_H

// Marks what crosses the border between the driver host and a driver module.
//
// A driver module is compiled with hidden visibility and exports its factory only. What the host declares keeps default
// visibility, so that a reference to it stays open in the module and is bound when the host loads the module.
#define H7_HOST_API __attribute__((visibility("default")))

#endif
