-- wrk script: posts the matching request saved by `bench_service_automatch --save` (its path in AUTOMATCH_BODY).
local file = assert(io.open(os.getenv("AUTOMATCH_BODY"), "rb"))
wrk.method = "POST"
wrk.body = file:read("*a")
file:close()
wrk.headers["Content-Type"] = "application/x-www-form-urlencoded"

-- Anything but 200 is a failure worth seeing in the figures.
local failed = 0
function response(status, headers, body)
    if status ~= 200 then
        failed = failed + 1
    end
end
