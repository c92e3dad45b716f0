#include "IDewarper.h"

IDewarper::~IDewarper() {}
