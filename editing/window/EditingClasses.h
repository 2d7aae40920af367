#pragma once

/// Makes the classes of this folder that can be made by their names known to the meta-object system.
void registerEditingClasses();
