// What the system's registry tells of the component: how each class is found by its ProgID and its
// identifier.
#pragma once

namespace vorlent::com {

// Writes it, or takes it out again with every key that was written. Raises a Failure when the system refuses;
// what was written until then stays.
void Register();
void Unregister();

}  // namespace vorlent::com
