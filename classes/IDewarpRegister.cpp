#include "IDewarpRegister.h"

IDewarpRegister::~IDewarpRegister() {}
