#pragma once

namespace vendril {

/// Tells that a piece of work has been done. Once nothing has told so for a second, the memory that
/// is free is given back to the system, from the default main context; by itself the C library
/// gives back little of a heap that has been large. Any thread.
void returnHeapWhenQuiet();

}  // namespace vendril
