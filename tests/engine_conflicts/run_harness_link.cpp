// The whole-run harness of the run tests, whose proxy these tests use too.
#include "engine_run/run_harness.cpp"
