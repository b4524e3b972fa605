// Calls of operator new since the program started, in all forms and threads.
//
// A benchmark reads it before and after its loop and reports the difference
// divided by the iterations. malloc called directly is not counted.
#pragma once

unsigned long long AllocCount();
