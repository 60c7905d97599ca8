// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

namespace framequilt::viewer {

/// What the keys do, as a table in rich text.
QString keysTable();

}  // namespace framequilt::viewer
