// The parts of the benchmark of watching. Each prints a table.
#pragma once

// Until all watches of a tree stand, beside "inotifywait -r".
void compareSetUp();

// How fast events are taken in, and what each costs.
void measureDraining();

// From an edit to its badge, beyond what coalescing and the quiet period take on purpose.
void measureDelay();

// How much longer others take to remove and to check out files that are watched.
void compareOthersInMemory();
void compareOthersOnDisk();
