#ifndef HOST_DRIVER_MULTIPLICITY_H
#define HOST_DRIVER_MULTIPLICITY_H

// How many drivers from one module a project may have.
enum DriverMultiplicity {
  DriverMultiplicity_Single = 0,  // one for the whole project
  DriverMultiplicity_PerDevice = 1
};

#endif
