// What the kernel lets this thread do that it does not let everybody do: capabilities(7).
#pragma once

namespace permora::host {

enum class CapabilitySet {
    kPermitted,  // what the thread could make effective
    kEffective,  // what counts
};

// `capability` is a CAP_ constant of the kernel. False also when it cannot be found out.
bool HasCapability(CapabilitySet set, int capability);

// Makes a permitted capability effective, or takes it out of effect, for the calling thread. False when that
// fails; nothing is changed then.
bool RaiseCapability(int capability);
bool LowerCapability(int capability);

}  // namespace permora::host
