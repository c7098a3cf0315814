#pragma once

#import <AppKit/AppKit.h>

namespace kovra {

// The values that a category cannot keep in instance variables, by object and name. Nothing is ever released, as
// nothing is in these tests, which are compiled without ARC.
void keep(id object, const char* name, id value);

// Returns the value, or nil.
id keptBy(id object, const char* name);

}  // namespace kovra
