#include "Support/AsOrdinaryUser.h"

namespace vorlent {

AsOrdinaryUser::AsOrdinaryUser() = default;

AsOrdinaryUser::~AsOrdinaryUser() = default;

}  // namespace vorlent
