// The whole-run harness of the run tests, built into this program too.
#include "engine_run/run_harness.cpp"
