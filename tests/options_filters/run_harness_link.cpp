// The run tests' harness, built into this program too.
#include "../engine_run/run_harness.cpp"
