#ifndef HOST_DRIVER_MULTIPLICITY_H
#define HOST_DRIVER_MULTIPLICITY_H

// How many drivers made from one module a project may hold.
enum DriverMultiplicity {
  DriverMultiplicity_Single = 0,  // one for the whole project
  DriverMultiplicity_PerDevice = 1
};

#endif
