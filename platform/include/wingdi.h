#pragma once
// Device contexts, for what they tell of the screen.

#include <minwindef.h>

#define LOGPIXELSX 88

int WINAPI GetDeviceCaps(HDC context, int index);
