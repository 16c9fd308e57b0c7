// SPDX-License-Identifier: BSD-3-Clause

// A folder that looks like an installation of some version of Nuke, made from the stand-in host.
#pragma once

#include "tests/scratch_folder.h"

#include <utility>

// The names that getters of cameras have from 14.0 and from 16.1 on, in place of the older ones.
struct Renamed {
    int major, minor;
    const char *header, *before, *after;
};
inline const Renamed renamed[] = {
    {14, 0, "CameraOp.h", "double focal_length() const", "double focalLength() const"},
    {14, 0, "CameraOp.h", "double film_width() const", "double horizontalAperture() const"},
    {14, 0, "CameraOp.h", "double film_height() const", "double verticalAperture() const"},
    {16, 1, "AxisOp.h", "const Matrix4& matrix() const { return matrix_; }",
     "struct Doubles {\n"
     "        double m[4][4];\n"
     "        const double* operator[](int column) const { return m[column]; }\n"
     "    };\n"
     "    Doubles worldTransform() const {\n"
     "        Doubles world;\n"
     "        for (int i = 0; i < 16; i++)\n"
     "            world.m[i / 4][i % 4] = double(matrix_[i / 4][i % 4]);\n"
     "        return world;\n"
     "    }"},
};

inline std::string version_header(int major, int minor) {
    return "#pragma once\n"
           "#define kDDImageVersionMajorNum " +
           std::to_string(major) + "\n#define kDDImageVersionMinorNum " + std::to_string(minor) +
           "\n#define kDDImageVersionReleaseNum 1\n"
           "#define kDDImageVersion \"imitated\"\n"
           "#define kDDImageVersionInteger 0\n"
           "#define kDDImageCompiled \"today for \" kDDImageVersion\n";
}

// Makes the folder `name`, which must not be there, and returns its path.
inline std::string make_nuke_installation(const ScratchFolder& folder, const std::string& name,
                                          int major, int minor) {
    namespace fs = std::filesystem;
    const std::string root = folder.folder(name);
    const std::string headers = name + "/include/DDImage/";
    fs::create_directories(folder.file(headers));
    for (const auto& entry : fs::directory_iterator(VELMORA_SOURCE "/host/DDImage"))
        if (entry.path().extension() == ".h")
            fs::copy(entry.path(), folder.file(headers));
    folder.write(headers + "ddImageVersionNumbers.h", version_header(major, minor));
    for (const Renamed& getter : renamed) {
        if (std::pair(major, minor) < std::pair(getter.major, getter.minor))
            continue;
        std::string text = folder.read(headers + getter.header);
        const std::size_t at = text.find(getter.before);
        if (at == std::string::npos)
            throw std::runtime_error(std::string("no ") + getter.before);
        folder.write(headers + getter.header,
                     text.replace(at, std::string(getter.before).size(), getter.after));
    }
    fs::copy(VELMORA_BUILD "/lib/libDDImage.so", root);
    return root;
}
