// SPDX-License-Identifier: MIT
#include "yardstick.h"

#include <vtkCellArray.h>
#include <vtkFloatArray.h>
#include <vtkIdList.h>
#include <vtkNew.h>
#include <vtkPoints.h>
#include <vtkPolyData.h>
#include <vtkQuadricDecimation.h>

using yardstick::Mesh;

namespace {

vtkNew<vtkPolyData> surfaceOf(const Mesh& mesh) {
    vtkNew<vtkPoints> points;
    for (std::size_t i = 0; i < mesh.positions.size(); i += 3)
        points->InsertNextPoint(&mesh.positions[i]);
    vtkNew<vtkCellArray> faces;
    for (std::size_t i = 0; i < mesh.triangles.size(); i += 3) {
        const vtkIdType face[3] = {mesh.triangles[i], mesh.triangles[i + 1], mesh.triangles[i + 2]};
        faces->InsertNextCell(3, face);
    }
    vtkNew<vtkPolyData> surface;
    surface->SetPoints(points);
    surface->SetPolys(faces);
    return surface;
}

Mesh meshOf(vtkPolyData& surface) {
    Mesh mesh;
    for (vtkIdType i = 0; i < surface.GetNumberOfPoints(); ++i) {
        double p[3];
        surface.GetPoint(i, p);
        for (const double coordinate : p)
            mesh.positions.push_back(static_cast<float>(coordinate));
    }
    vtkNew<vtkIdList> face;
    vtkCellArray* const faces = surface.GetPolys();
    for (faces->InitTraversal(); faces->GetNextCell(face) != 0;) {
        for (vtkIdType k = 0; k < 3; ++k)
            mesh.triangles.push_back(static_cast<std::uint32_t>(face->GetId(k)));
    }
    return mesh;
}

Mesh simplify(const Mesh& mesh, std::size_t triangles, std::string_view /*variant*/,
              double& seconds) {
    const vtkNew<vtkPolyData> surface = surfaceOf(mesh);
    vtkNew<vtkQuadricDecimation> decimation;
    decimation->SetInputData(surface);
    decimation->SetTargetReduction(1.0 - static_cast<double>(triangles) /
                                             static_cast<double>(mesh.triangleCount()));
    seconds = yardstick::secondsOf([&] { decimation->Update(); });
    return meshOf(*decimation->GetOutput());
}

}  // namespace

int main(int argc, char** argv) {
    return yardstick::run(argc, argv, simplify);
}
