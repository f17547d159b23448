#pragma once

/// The number of times that this process has asked for memory with new.
long allocations();
