// The parts of the benchmark of the extension. Each prints a table.
#pragma once

// Ten thousand questions at once, with and without something cached.
void measureBursts();

// The registry alone, without bus and threads.
void measureRegistry();
