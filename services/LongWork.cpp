#include "LongWork.h"

void RunLongWork(HWND, void (*work)(void* argument), void* argument) {
    work(argument);
}
