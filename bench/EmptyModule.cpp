// A module with one function. Loading it is measured beside loading the agent's module.
extern "C" int Nothing();

int Nothing() {
  return 0;
}
