// Whether the library can open connections.
#pragma once

namespace ormel {

// False after a failed start and after the stop, and before the start unless the host filled the record itself.
bool canConnect();

} // namespace ormel
