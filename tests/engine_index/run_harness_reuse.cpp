// The whole-run tests' documents and proxy, compiled into this program too.
#include "engine_run/run_harness.cpp"
