#pragma once

// The host's primitive-type tag.
class McPrimType {
public:
    enum Type {
        MC_UINT8 = 0,  // byte (unsigned)
        MC_INT16 = 1,  // short
        MC_INT32 = 2,
        MC_FLOAT = 3,
        MC_DOUBLE = 4,
        MC_UINT16 = 7, // ushort
    };

    McPrimType(int type = MC_FLOAT) : mType(type) {}
    int getType() const { return mType; }
    operator int() const { return mType; }

    // Element size in bytes; 0 for codes the host does not know.
    int size() const
    {
        switch (mType) {
        case MC_UINT8: return 1;
        case MC_INT16: return 2;
        case MC_UINT16: return 2;
        case MC_INT32: return 4;
        case MC_FLOAT: return 4;
        case MC_DOUBLE: return 8;
        default: return 0;
        }
    }

    // "byte", "short", "ushort", "int32", "float", "double", or "unknown".
    const char* getName() const
    {
        switch (mType) {
        case MC_UINT8: return "byte";
        case MC_INT16: return "short";
        case MC_UINT16: return "ushort";
        case MC_INT32: return "int32";
        case MC_FLOAT: return "float";
        case MC_DOUBLE: return "double";
        default: return "unknown";
        }
    }

private:
    int mType;
};
