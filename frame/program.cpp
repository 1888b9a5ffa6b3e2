#include "frame/program.h"

Program program;
