// SPDX-License-Identifier: BSD-3-Clause
#include "core/newmatrix.h"

#include "tests/core/matrix_tools.h"
#include "tests/core/observed.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

// Tolerances: a sum of n products of values that have rounded once or twice is off by a few units
// of the last place of its largest term. `ulps` counts them; what each test allows is said there.
namespace {

template <class real>
class MatrixOf : public testing::Test {
protected:
    static real ulps(real n) { return n * std::numeric_limits<real>::epsilon(); }

    static std::string singular_warning() {
        return std::string("warning: matrix appears to be singular; inverse may not be reliable "
                           "in <Matrix4<real> Matrix4<real>::inverse() const [with real = ") +
               (sizeof(real) == 4 ? "float" : "double") + "]>\n";
    }
};

typedef testing::Types<float, double> Precisions;
TYPED_TEST_SUITE(MatrixOf, Precisions);

template <class real>
std::string stderr_of_inverse(const Matrix4<real>& m, Matrix4<real>& inverse) {
    return stderr_of([&] { inverse = m.inverse(); });
}

template <class real>
std::string stderr_of_inverse(const Matrix4<real>& m) {
    Matrix4<real> ignored;
    return stderr_of_inverse(m, ignored);
}

} // namespace

// ---- Layout ----------------------------------------------------------------------------------

TEST(VectorN, IsItsElementsInOrder) {
    EXPECT_EQ(sizeof(Vector2), 8u);
    EXPECT_EQ(sizeof(Color3), 12u);
    EXPECT_EQ(sizeof(VectorN<double, 3>), 24u);
    EXPECT_TRUE((std::is_same<Vector2, VectorN<float, 2>>::value));
    EXPECT_TRUE((std::is_same<Color3, VectorN<float, 3>>::value));

    VectorN<double, 3> v;
    for (int i = 0; i < 3; i++) {
        EXPECT_EQ(reinterpret_cast<char*>(&v[i]) - reinterpret_cast<char*>(&v), i * 8);
        v[i] = i + 1;
    }
    const VectorN<double, 3> copy = v;
    v[0] = 9;
    EXPECT_EQ(copy[0], 1.0);
    EXPECT_EQ(copy[1], 2.0);
    EXPECT_EQ(copy[2], 3.0);
    EXPECT_TRUE(std::is_trivially_copyable<Color3>::value);
}

TYPED_TEST(MatrixOf, IsSixteenElementsRowByRow) {
    typedef Matrix4<TypeParam> Matrix;
    EXPECT_EQ(sizeof(Matrix), 16 * sizeof(TypeParam));
    EXPECT_TRUE(std::is_trivially_copyable<Matrix>::value);
    Matrix m;
    for (int i = 0; i < 4; i++)
        for (int j = 0; j < 4; j++)
            EXPECT_EQ(&m(i, j), reinterpret_cast<TypeParam*>(&m) + 4 * i + j);
    m(2, 3) = 5;
    const Matrix copy = m;
    m(2, 3) = 6;
    EXPECT_EQ(copy(2, 3), TypeParam(5));
}

TEST(Matrix4, DblMatrix4IsTheDoubleOne) {
    EXPECT_TRUE((std::is_same<DblMatrix4, Matrix4<double>>::value));
}

// ---- Identity --------------------------------------------------------------------------------

TYPED_TEST(MatrixOf, TheIdentityIsOneConstant) {
    typedef Matrix4<TypeParam> Matrix;
    const Matrix& identity = Matrix::the_identity();
    for (int i = 0; i < 4; i++)
        for (int j = 0; j < 4; j++)
            EXPECT_EQ(identity(i, j), TypeParam(i == j));
    EXPECT_EQ(&identity, &Matrix::the_identity());

    std::vector<const Matrix*> seen(8);
    std::vector<std::thread> threads;
    for (const Matrix*& slot : seen)
        threads.emplace_back([&slot] { slot = &Matrix::the_identity(); });
    for (std::thread& thread : threads)
        thread.join();
    for (const Matrix* address : seen)
        EXPECT_EQ(address, &identity);
}

// ---- Product ---------------------------------------------------------------------------------

// Four products of values up to 5, each rounded, and three sums: within 8 ulps of 4 * 25.
TYPED_TEST(MatrixOf, ProductIsRowByColumn) {
    std::mt19937 random(1);
    for (int round = 0; round < 100; round++) {
        const auto a = random_matrix<TypeParam>(random), b = random_matrix<TypeParam>(random);
        EXPECT_LE(distance(plain(a * b), product(plain(a), plain(b))), this->ulps(8 * 100));
    }
}

TYPED_TEST(MatrixOf, ProductByTheIdentityChangesNothing) {
    std::mt19937 random(2);
    const auto& identity = Matrix4<TypeParam>::the_identity();
    const auto m = random_matrix<TypeParam>(random);
    EXPECT_EQ(distance(plain(m * identity), plain(m)), 0);
    EXPECT_EQ(distance(plain(identity * m), plain(m)), 0);
}

TYPED_TEST(MatrixOf, PointsPassTheLeftFactorFirst) {
    // Scale by 2, then move by (1, 2, 3): the translation stays as it is.
    const auto scale = diagonal<TypeParam>(2, 2, 2, 1);
    const auto move = matrix<TypeParam>({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 1, 2, 3, 1});
    const auto scale_then_move = scale * move, move_then_scale = move * scale;
    for (int j = 0; j < 3; j++) {
        EXPECT_EQ(scale_then_move(j, j), TypeParam(2));
        EXPECT_EQ(scale_then_move(3, j), TypeParam(j + 1));
        EXPECT_EQ(move_then_scale(3, j), TypeParam(2 * (j + 1)));
    }
}

// ---- Determinant -----------------------------------------------------------------------------

TYPED_TEST(MatrixOf, DeterminantOfSimpleMatrices) {
    typedef TypeParam real;
    struct {
        Matrix4<real> m;
        real determinant;
    } const cases[] = {
        {Matrix4<real>::the_identity(), 1},
        {diagonal<real>(2, 3, 5, 7), 210},
        {diagonal<real>(2, -3, 5, 7), -210},
        {diagonal<real>(0, 3, 5, 7), 0},
        {matrix<real>({0, 1, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}), -1}, // two rows swapped
        {matrix<real>({0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 1, 0, 0, 0}), -1}, // a cycle of four
        {matrix<real>({0, 0, 1, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 1}), 1},  // a cycle of three
        {matrix<real>({2, 9, 8, 7, 0, 3, 6, 5, 0, 0, 5, 4, 0, 0, 0, 7}), 210},
        {matrix<real>({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16}), 0},
        {matrix<real>({1, 2, 0, 3, 4, 0, 5, 6, 0, 7, 8, 9, 10, 11, 12, 0}), 2493},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.m.determinant(), c.determinant) << &c - cases;
        EXPECT_EQ(determinant(plain(c.m)), c.determinant) << &c - cases;
    }
}

// 24 products of up to 625, each rounded three times, and 23 sums: within 32 ulps of the sum of
// their sizes, which stays below 3000 for these matrices.
TYPED_TEST(MatrixOf, DeterminantIsTheSumOverPermutations) {
    std::mt19937 random(3);
    for (int round = 0; round < 200; round++) {
        const auto m = random_matrix<TypeParam>(random);
        EXPECT_LE(std::fabs(m.determinant() - determinant(plain(m))), this->ulps(32 * 3000));
    }
}

TYPED_TEST(MatrixOf, DeterminantOfAProductIsTheProductOfTheDeterminants) {
    std::mt19937 random(4);
    for (int round = 0; round < 100; round++) {
        const auto a = random_matrix<TypeParam>(random), b = random_matrix<TypeParam>(random);
        const TypeParam apart = a.determinant() * b.determinant();
        EXPECT_NEAR((a * b).determinant() / apart, 1, this->ulps(500));
    }
}

// ---- Inverse ---------------------------------------------------------------------------------

TYPED_TEST(MatrixOf, InverseOfTheIdentityIsTheIdentityWithoutAWarning) {
    Matrix4<TypeParam> inverse;
    EXPECT_EQ(stderr_of_inverse(Matrix4<TypeParam>::the_identity(), inverse), "");
    EXPECT_EQ(distance(plain(inverse), identity()), 0);
}

// The elements of these inverses are below 1; their cofactors lose up to a few dozen ulps.
TYPED_TEST(MatrixOf, InverseAgreesWithElimination) {
    std::mt19937 random(5);
    for (int round = 0; round < 200; round++) {
        const auto m = random_matrix<TypeParam>(random);
        Matrix4<TypeParam> inverted;
        EXPECT_EQ(stderr_of_inverse(m, inverted), "");
        EXPECT_LE(distance(plain(inverted), inverse(plain(m))), this->ulps(50));
    }
}

TYPED_TEST(MatrixOf, InverseUndoesItsMatrix) {
    std::mt19937 random(6);
    for (int round = 0; round < 100; round++) {
        const auto m = random_matrix<TypeParam>(random);
        EXPECT_LE(distance(plain(m * m.inverse()), identity()), this->ulps(200));
        EXPECT_LE(distance(plain(m.inverse() * m), identity()), this->ulps(200));
    }
}

TYPED_TEST(MatrixOf, InverseOfAProductIsTheProductOfTheInversesTurnedAround) {
    std::mt19937 random(7);
    for (int round = 0; round < 100; round++) {
        const auto a = random_matrix<TypeParam>(random), b = random_matrix<TypeParam>(random);
        EXPECT_LE(distance(plain((a * b).inverse()), plain(b.inverse() * a.inverse())),
                  this->ulps(200));
    }
}

TYPED_TEST(MatrixOf, InverseOfAnAffineMatrixByHand) {
    const auto m = matrix<TypeParam>({2, 0, 0, 0, 0, 4, 0, 0, 0, 0, 8, 0, 1, 2, 3, 1});
    const auto expected = matrix<TypeParam>(
        {0.5f, 0, 0, 0, 0, 0.25f, 0, 0, 0, 0, 0.125f, 0, -0.5f, -0.5f, -0.375f, 1});
    EXPECT_EQ(distance(plain(m.inverse()), plain(expected)), 0);
}

// 49 * (1 / 49) rounds to less than 1 in double, 41 * (1 / 41) in float; 49 / 49 does not.
TYPED_TEST(MatrixOf, InverseMultipliesByTheReciprocalOfTheDeterminant) {
    const TypeParam d = sizeof(TypeParam) == 4 ? 41 : 49;
    const auto inverse = diagonal<TypeParam>(d, 1, 1, 1).inverse();
    const TypeParam reciprocal = 1 / d;
    const TypeParam below_one = d * reciprocal;
    ASSERT_LT(below_one, TypeParam(1));
    EXPECT_EQ(inverse(0, 0), reciprocal);
    for (int i = 1; i < 4; i++)
        EXPECT_EQ(inverse(i, i), below_one);
}

TYPED_TEST(MatrixOf, NearSingularMatricesAreInvertedWithOneWarningPerCall) {
    const auto m = diagonal<TypeParam>(TypeParam(1e-11), 1, 1, 1);
    Matrix4<TypeParam> inverse;
    EXPECT_EQ(stderr_of_inverse(m, inverse), this->singular_warning());
    EXPECT_EQ(stderr_of_inverse(m, inverse), this->singular_warning());
    EXPECT_NEAR(inverse(0, 0) / TypeParam(1e11), 1, this->ulps(2));
    EXPECT_NEAR(inverse(1, 1), 1, this->ulps(2));
}

TYPED_TEST(MatrixOf, WarnsBelowTenToTheMinusTen) {
    typedef TypeParam real;
    // In float the nearest value to 1e-10 lies above it, so it is not below.
    const real at = real(1e-10), below = std::nextafter(at, real(0));
    struct {
        real determinant;
        bool warns;
    } const cases[] = {
        {at, false},         {below, true}, {-at, false}, {-below, true},
        {real(1e-9), false}, {0, true},     {1, false},   {real(-1), false},
    };
    for (const auto& c : cases) {
        const auto m = diagonal<real>(c.determinant, 1, 1, 1);
        ASSERT_EQ(m.determinant(), c.determinant);
        EXPECT_EQ(stderr_of_inverse(m), c.warns ? this->singular_warning() : "") << c.determinant;
    }
}

// Not a number is not below the limit.
TYPED_TEST(MatrixOf, InvertsADeterminantThatIsNoNumberWithoutAWarning) {
    typedef TypeParam real;
    const real not_a_number = std::numeric_limits<real>::quiet_NaN();
    const real infinite = std::numeric_limits<real>::infinity();
    for (const real element : {not_a_number, infinite, -infinite}) {
        const auto m = diagonal<real>(element, 1, 1, 1); // infinite times 0 is not a number
        ASSERT_TRUE(std::isnan(m.determinant()));
        Matrix4<real> inverse;
        EXPECT_EQ(stderr_of_inverse(m, inverse), "");
        for (const real e : inverse.e)
            EXPECT_TRUE(std::isnan(e)) << element;
    }
}

TYPED_TEST(MatrixOf, SmallElementsAloneMakeASmallDeterminant) {
    // A well-shaped matrix that happens to be small: its determinant, 1e-12, is what counts.
    const auto m =
        diagonal<TypeParam>(TypeParam(1e-3), TypeParam(1e-3), TypeParam(1e-3), TypeParam(1e-3));
    Matrix4<TypeParam> inverse;
    EXPECT_EQ(stderr_of_inverse(m, inverse), this->singular_warning());
    for (int i = 0; i < 4; i++)
        EXPECT_NEAR(inverse(i, i), 1000, 1000 * this->ulps(10));
}

TYPED_TEST(MatrixOf, SingularMatricesGiveInfinitiesOrNans) {
    const Matrix4<TypeParam> cases[] = {
        diagonal<TypeParam>(0, 1, 1, 1), diagonal<TypeParam>(0, 0, 0, 0),
        matrix<TypeParam>({1, 2, 3, 4, 1, 2, 3, 4, 0, 0, 1, 0, 0, 0, 0, 1}), // equal rows
    };
    for (const auto& m : cases) {
        Matrix4<TypeParam> inverse;
        EXPECT_EQ(stderr_of_inverse(m, inverse), this->singular_warning());
        for (TypeParam e : inverse.e)
            EXPECT_FALSE(std::isfinite(e)) << &m - cases;
    }
}
