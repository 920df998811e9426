// What loading the agent's module is measured beside: a module with one function.
extern "C" int Nothing();

int Nothing() {
  return 0;
}
