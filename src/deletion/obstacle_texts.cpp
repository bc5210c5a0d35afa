#include "deletion/obstacle_texts.h"

namespace permora {

const char* ObstacleText(OverwriteObstacle obstacle) {
    switch (obstacle) {
        case OverwriteObstacle::kSeveralNames:
            return "it has further names (hard links)";
        case OverwriteObstacle::kCopyOnWriteVolume:
            return "its file system never writes over what is there";
        case OverwriteObstacle::kOtherServer:
            return "it lies on another server, whose way to write it cannot be known";
        case OverwriteObstacle::kCompressed:
            return "it is compressed";
        case OverwriteObstacle::kEncrypted:
            return "it is encrypted";
        case OverwriteObstacle::kSparse:
            return "it is sparse";
        case OverwriteObstacle::kNamedStreams:
            return "it has named streams, which this mount moves when it writes them";
        case OverwriteObstacle::kJournaled:
            return "its file system writes it by way of the journal";
        case OverwriteObstacle::kOpenersUnknown:
            return "whether another program has it open cannot be known";
        case OverwriteObstacle::kNamesUnknown:
            return "whether it has further names (hard links) cannot be known, as no folder can be made here "
                   "that is closed to others";
    }
    return "";
}

bool IsUncertainty(OverwriteObstacle obstacle) {
    return obstacle == OverwriteObstacle::kOpenersUnknown || obstacle == OverwriteObstacle::kNamesUnknown ||
           obstacle == OverwriteObstacle::kOtherServer;
}

}  // namespace permora
