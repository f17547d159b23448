#include "Matrix.h"

#include <iostream>

mat3::mat3() : mat3(1, 0, 0, 0, 1, 0, 0, 0, 1) {}

mat3::mat3(float m00, float m01, float m02, float m10, float m11, float m12, float m20, float m21,
           float m22)
    : m{m00, m01, m02, m10, m11, m12, m20, m21, m22} {}

mat3 mat3::transpose() const {
    return {m[0], m[3], m[6], m[1], m[4], m[7], m[2], m[5], m[8]};
}

vec3 mat3::operator*(const vec3& v) const {
    return {m[0] * v.x + m[1] * v.y + m[2] * v.y, m[3] * v.x + m[4] * v.y + m[5] * v.y,
            m[6] * v.x + m[7] * v.y + m[8] * v.y};
}

void mat3::display() const {
    for (int row = 0; row < 3; ++row) {
        const float* r = m + 3 * row;
        std::cout << "|" << r[0] << ", " << r[1] << ", " << r[2] << "|\n";
    }
}

mat4::mat4() : mat4(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1) {}

mat4::mat4(float m00, float m01, float m02, float m03, float m10, float m11, float m12, float m13,
           float m20, float m21, float m22, float m23, float m30, float m31, float m32, float m33)
    : m{m00, m01, m02, m03, m10, m11, m12, m13, m20, m21, m22, m23, m30, m31, m32, m33} {}

mat4 mat4::transpose() const {
    return {m[0], m[4], m[8],  m[12], m[1], m[5], m[9],  m[13],
            m[2], m[6], m[10], m[14], m[3], m[7], m[11], m[15]};
}

mat3 mat4::toMat3() const {
    return {m[0], m[1], m[2], m[4], m[5], m[6], m[8], m[9], m[10]};
}

mat4 mat4::operator*(const mat4& b) const {
    mat4 product;
    for (int i = 0; i < 4; ++i) {
        const float* row = m + 4 * i;
        for (int j = 0; j < 4; ++j) {
            // No running sum that starts at 0: it would turn a sum of -0 into +0.
            product.m[4 * i + j] =
                row[0] * b.m[j] + row[1] * b.m[4 + j] + row[2] * b.m[8 + j] + row[3] * b.m[12 + j];
        }
    }
    return product;
}

vec4 mat4::operator*(const vec4& v) const {
    const auto component = [this, &v](int i) {
        const float* row = m + 4 * i;
        return row[0] * v.x + row[1] * v.y + row[2] * v.z + row[3] * v.w;
    };
    return {component(0), component(1), component(2), component(3)};
}

void mat4::display() const {
    for (int row = 0; row < 4; ++row) {
        const float* r = m + 4 * row;
        std::cout << "|" << r[0] << ", " << r[1] << ", " << r[2] << ", " << r[3] << "|\n";
    }
}
