#pragma once

#include "bench/Side.h"
#include "bench/Table.h"
#include "bench/Testbed.h"

namespace vendril::bench {

/// Each takes its measures on `bed` and prints them into `table`. Throws std::exception when a
/// program does not do what it should.

/// From the start of a process, or of its first link, to the request: agent, floor program, script.
void measureStarts(Testbed& bed, const Options& options, Table& table);

/// From an Open call to the request, with agent and floor program running.
void measureWarm(Testbed& bed, const Options& options, Table& table);

/// What one process costs while it idles and as it handles more and more links.
void measureEndurance(Testbed& bed, const Options& options, Table& table);

/// Links a second on one processor, and memory for each request in flight.
void measureLoad(Testbed& bed, const Options& options, Table& table);

/// Instructions for one warm link, as callgrind counts them.
void measureInstructions(Testbed& bed, const Options& options, Table& table);

}  // namespace vendril::bench
