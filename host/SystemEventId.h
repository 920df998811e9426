#ifndef HOST_SYSTEM_EVENT_ID_H
#define HOST_SYSTEM_EVENT_ID_H

// The ids under which a listener registers for system events. A listener gets only the events of its ids. It tells events
// apart by the name that each event carries.
enum SystemEventId : unsigned int {
  SystemEvent_OnProjectLoaded = 5,      // no parameters
  SystemEvent_OnItemRemoved = 11,       // "iditem", "idroom"
  SystemEvent_OnVariableAdded = 34,     // "iddevice", "idvariable"
  SystemEvent_OnVariableRemoved = 35,   // "iddevice", "idvariable"; sent for user variables as well
  SystemEvent_OnUserVariableAdded = 36  // "iddevice", "idvariable"
};

#endif
