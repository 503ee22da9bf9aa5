// The entries the host calls, one per data kind (hxcsv.readers names them).
// All three follow the one course of ImportCourse.h.
#include "ImportCourse.h"
#include "QxCSVLineSetImport.h"
#include "QxCSVPointClusterImport.h"
#include "QxCSVUniformScalarFieldImport.h"

extern "C" HXCSV_API int hxReadCSVPointCluster(int argc, const char** argv)
{
    return hxcsv::readCSV<QxCSVPointClusterImport>("hxReadCSVPointCluster", argc, argv);
}

extern "C" HXCSV_API int hxReadCSVLineSet(int argc, const char** argv)
{
    return hxcsv::readCSV<QxCSVLineSetImport>("hxReadCSVLineSet", argc, argv);
}

extern "C" HXCSV_API int hxReadCSVUniformScalarField(int argc, const char** argv)
{
    return hxcsv::readCSV<QxCSVUniformScalarFieldImport>("hxReadCSVUniformScalarField", argc, argv);
}
