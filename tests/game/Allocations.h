#pragma once

/// The number of times that this process has asked for memory with new.
long allocations();

/// The bytes that it has asked for so, given back or not.
long allocatedBytes();
